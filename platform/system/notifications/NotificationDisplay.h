#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelpSystem/NotificationCenter.h"
#include "notifications/StoreUse.h"

namespace VorselKelp::system {

/// What the user sees of a notification centre: shows what comes due, and has itself woken for it. Main
/// thread.
class NotificationDisplay : public std::enable_shared_from_this<NotificationDisplay> {
 public:
  NotificationDisplay(CenterPorts ports, StoreUse store)
      : ports_(std::move(ports)), store_(std::move(store)) {}
  ~NotificationDisplay();
  NotificationDisplay(const NotificationDisplay&) = delete;
  NotificationDisplay& operator=(const NotificationDisplay&) = delete;

  void showHere();
  void showThere(std::shared_ptr<ShowingProcess> other);
  /// Shows what is due, and waits for what comes next.
  void look();
  /// Shows what has been delivered.
  void present(const platform::NotificationRequest& request, const platform::NotificationCategory& category,
               NotificationPresenter::Shown shown);
  void takeAway(const std::vector<std::string>& identifiers);

 private:
  /// What a look into the store found.
  struct Sight {
    std::vector<platform::NotificationRequest> due;
    std::vector<platform::NotificationCategory> categories;
    std::optional<double> next;
    bool trouble = false;
  };

  static Sight lookInto(NotificationStore& store, bool shows, bool wakes);
  void show(const Sight& sight);
  void waitFor(const Sight& sight);

  const CenterPorts ports_;
  const StoreUse store_;
  bool decided_ = !ports_.undecided;
  std::shared_ptr<ShowingProcess> other_;
};

/// The category that the notification names; one without buttons when it is not among them.
platform::NotificationCategory categoryOf(const platform::NotificationRequest& request,
                                          const std::vector<platform::NotificationCategory>& categories);

}  // namespace VorselKelp::system
