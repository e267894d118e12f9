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
  /// Main thread.
  void willTerminate(Content best, const Handler& handler);

  /// The last processed notification, one element.
  [[nodiscard]] std::vector<VorselReceivedObject> lastReceived() const;

 private:
  /// One notification on its way.
  struct Delivery {
    DeliveryPlan plan;
    Content best;
    Handler handler;
  };

  [[nodiscard]] PushObj decode(const platform::UserInfo& userInfo) const;
  void deliverAd(const Delivery& delivery);
  void adAnswered(const Delivery& delivery, const std::optional<AdexObject>& ad);
  void deliverMessage(const Delivery& delivery);
  void finish(const Delivery& delivery, std::optional<CategoryHelper::Registration> category);
  void finishWithImage(const Delivery& delivery, const std::optional<platform::NotificationAttachment>& image,
                       const std::function<void()>& rest);
  /// The time limit has handed this content over; nothing may change it any more.
  [[nodiscard]] bool handedOver(const Content& content) const;
  void saveCategory(const Delivery& delivery, const CategoryHelper::Registration& category);

  std::shared_ptr<CoreContext> context_;
  std::shared_ptr<VorselRequest> requests_;
  std::shared_ptr<OpenTargets> targets_;
  std::shared_ptr<CategoryHelper> categories_;
  std::shared_ptr<ImageAttachment> images_;
  mutable std::mutex mutex_;
  std::vector<VorselReceivedObject> lastReceived_;
  std::weak_ptr<platform::NotificationContent> handedOver_;
};

}  // namespace VorselKelp
