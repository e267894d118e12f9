#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "VorselKelpFreedesktop/BusNotifications.h"
#include "VorselKelpSystem/NotificationStore.h"
#include "road/ApplicationDoor.h"

namespace VorselKelp::agent {

/// Takes what the user does with a notification to the store and to the application. Main thread.
class Taps {
 public:
  /// `ended` comes when the application has been reached, or could not be.
  Taps(std::shared_ptr<system::NotificationStore> store, ApplicationDoor& application,
       std::function<void()> ended);
  Taps(const Taps&) = delete;
  Taps& operator=(const Taps&) = delete;

  void respond(const freedesktop::BusNotificationResponse& response);
  /// Whether the application has answered to every one.
  [[nodiscard]] bool idle() const { return responding_ == 0; }

 private:
  const std::shared_ptr<system::NotificationStore> store_;
  ApplicationDoor& application_;
  const std::function<void()> ended_;
  std::size_t responding_ = 0;
};

}  // namespace VorselKelp::agent
