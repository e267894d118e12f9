#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelpSystem/NotificationCenter.h"
#include "notifications/StoreUse.h"

namespace VorselKelp::system {

/// What the user sees of a notification centre: shows what comes due, tries again later what the screen
/// refused, and has itself woken for both. Main thread.
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
    std::vector<HeldNotification> due;
    std::vector<platform::NotificationCategory> categories;
    std::optional<double> next;
    bool trouble = false;
  };

  /// A notification that the screen refused, and what was told of it.
  struct Refusal {
    double due = 0;
    std::string line;
    friend bool operator==(const Refusal&, const Refusal&) = default;
  };

  static Sight lookInto(NotificationStore& store, bool shows, bool wakes, bool again);
  bool isTimeToRetry();
  void show(const Sight& sight, bool complete);
  void answered(const HeldNotification& notification, const Status& shown);
  void retryLater();
  void wait();

  const CenterPorts ports_;
  const StoreUse store_;
  bool decided_ = !ports_.undecided;
  std::shared_ptr<ShowingProcess> other_;
  std::optional<double> next_;
  /// When to try again what was refused; at the start: what an earlier process could not show.
  std::optional<double> retry_ = 0;
  std::map<std::string, Refusal> refusals_;  ///< by identifier
};

/// The category that the notification names; one without buttons when it is not among them.
platform::NotificationCategory categoryOf(const platform::NotificationRequest& request,
                                          const std::vector<platform::NotificationCategory>& categories);

}  // namespace VorselKelp::system
