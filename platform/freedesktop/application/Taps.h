#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/platform/Clock.h"
#include "VorselKelp/platform/ContentExtension.h"
#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelp/platform/Notification.h"
#include "VorselKelpSystem/StoreWorker.h"

namespace VorselKelp::freedesktop {

/// What the user does with the application's notifications, on its way to the core. Main thread; the core
/// must be there while it lives.
class Taps : public std::enable_shared_from_this<Taps> {
 public:
  /// Either may be null; see ApplicationOptions.
  struct Doors {
    std::function<void(const std::string& activationToken)> raise;
    std::function<void(const platform::DeliveredNotification&)> openCampaign;
  };

  Taps(std::shared_ptr<system::StoreWorker> worker, std::shared_ptr<platform::MainQueue> mainQueue,
       std::shared_ptr<platform::Clock> clock, Doors doors);

  /// A notification that this process shows. An empty button is the notification itself.
  void tapped(const std::string& identifier, std::string button, const std::string& activationToken);
  /// The exported action was activated. What is taken already, or was tapped before, is left alone: agent and
  /// application may both have thought of it.
  void activated(const std::string& identifier, std::string button);
  /// What the user did while the application did not run.
  void takeKept();
  /// The user does not want to see it any more.
  void dismissed(const std::string& identifier);

  /// Whether nothing is on its way.
  [[nodiscard]] bool idle() const { return underWay_ == 0; }

 private:
  /// A notification that was tapped, and whether the application shows itself for that.
  struct Tapped {
    platform::NotificationRequest request;
    std::string button;
    bool raises = false;
  };

  static Tapped judge(system::NotificationStore& store, platform::NotificationRequest request,
                      std::string button);
  void handle(Tapped tapped, const std::string& activationToken);
  void open(Tapped tapped) const;

  const std::shared_ptr<system::StoreWorker> worker_;
  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const std::shared_ptr<platform::Clock> clock_;
  const Doors doors_;
  int underWay_ = 0;
};

}  // namespace VorselKelp::freedesktop
