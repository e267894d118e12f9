#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "ads/AdRecords.h"
#include "core/CoreContext.h"
#include "net/VorselRequest.h"
#include "push/CategoryHelper.h"
#include "push/DeliveryPlan.h"
#include "push/ImageAttachment.h"
#include "push/OpenTargets.h"
#include "push/PushTables.h"

namespace VorselKelp {

/// Prepares an incoming notification inside the service extension: decides what it shows, requests its view
/// and impression trackers, remembers what opening it does.
class ServiceExtension : public std::enable_shared_from_this<ServiceExtension> {
 public:
  using Content = std::shared_ptr<platform::NotificationContent>;
  using Handler = std::function<void(Content)>;

  ServiceExtension(std::shared_ptr<CoreContext> context, std::shared_ptr<VorselRequest> requests,
                   std::shared_ptr<OpenTargets> targets, std::shared_ptr<CategoryHelper> categories,
                   std::shared_ptr<ImageAttachment> images);

  /// Main thread. Stops the process when the request carries no single message.
  void didReceive(const platform::NotificationRequest& request, Content best, Handler handler);
  /// Hands the content over as it stands; what it still waits for comes too late for it. Main thread.
  void willTerminate(Content best, const Handler& handler);

  /// The last processed notification, one element.
  [[nodiscard]] std::vector<VorselReceivedObject> lastReceived() const;

 private:
  /// One notification on its way.
  struct Delivery {
    DeliveryPlan plan;
    Content best;
    Handler handler;
    std::optional<CategoryHelper::Registration> category{};  ///< until it is remembered
    bool remembered = false;                                 ///< what opening it does is stored
    bool handedOver = false;  ///< by the time limit: nothing may change it any more
  };
  using Waiting = std::shared_ptr<Delivery>;

  [[nodiscard]] PushObj decode(const platform::UserInfo& userInfo) const;
  void deliverAd(Delivery delivery);
  void adAnswered(const Waiting& delivery, const std::optional<AdexObject>& ad);
  void deliverMessage(Delivery delivery);
  void fetchImage(const Waiting& delivery, const std::string& url);
  void imageAnswered(Delivery& delivery, const std::optional<platform::NotificationAttachment>& image);
  void finish(Delivery& delivery);
  /// Inside a transaction.
  void remember(const Delivery& delivery);
  /// Keeps a delivery that waits for an answer where the time limit finds it.
  [[nodiscard]] Waiting keep(Delivery delivery);
  [[nodiscard]] bool isHandedOver(const Delivery& delivery) const;

  std::shared_ptr<CoreContext> context_;
  std::shared_ptr<VorselRequest> requests_;
  std::shared_ptr<OpenTargets> targets_;
  std::shared_ptr<CategoryHelper> categories_;
  std::shared_ptr<ImageAttachment> images_;
  mutable std::mutex mutex_;
  std::vector<VorselReceivedObject> lastReceived_;
  std::vector<std::weak_ptr<Delivery>> waiting_;
};

}  // namespace VorselKelp
