#include "notifications/NotificationDisplay.h"

#include <algorithm>
#include <utility>

#include "VorselKelpPosix/LineSink.h"

namespace VorselKelp::system {
namespace {

using platform::NotificationCategory;
using platform::NotificationRequest;

/// Seconds until a store that failed, or a screen that refused, is asked again.
constexpr double troublePause = 60;

}  // namespace

NotificationCategory categoryOf(const NotificationRequest& request,
                                const std::vector<NotificationCategory>& categories) {
  const auto& name = request.content.categoryIdentifier;
  const auto found = std::ranges::find(categories, name, &NotificationCategory::identifier);
  return found == categories.end() ? NotificationCategory{name, {}, false} : *found;
}

NotificationDisplay::~NotificationDisplay() {
  if (ports_.wakeUp) ports_.wakeUp->cancel();
}

void NotificationDisplay::showHere() {
  decided_ = true;
  look();
}

void NotificationDisplay::showThere(std::shared_ptr<ShowingProcess> other) {
  decided_ = true;
  other_ = std::move(other);
  look();
}

/// The looks come back in the order in which they went: a later one's wake-up is not replaced by an
/// earlier's.
void NotificationDisplay::look() {
  if (!decided_) return;
  if (other_) return other_->look();
  const bool shows = ports_.presenter != nullptr;
  const bool wakes = ports_.wakeUp != nullptr;
  if (!shows && !wakes) return;
  const bool again = isTimeToRetry();
  store_.read(
      ports_.mainQueue, [=](NotificationStore& store) { return lookInto(store, shows, wakes, again); },
      [weak = weak_from_this(), again](const Sight& sight) {
        const auto self = weak.lock();
        if (!self) return;
        self->next_ = sight.next;
        self->show(sight, again && !sight.trouble);
        if (sight.trouble) self->retryLater();
        self->wait();
      });
}

/// Also when the clock was set back.
bool NotificationDisplay::isTimeToRetry() {
  const double now = ports_.store->clock()->now();
  if (!retry_ || (now < *retry_ && now >= *retry_ - troublePause)) return false;
  retry_.reset();
  return true;
}

NotificationDisplay::Sight NotificationDisplay::lookInto(NotificationStore& store, bool shows, bool wakes,
                                                         bool again) {
  Sight sight;
  const auto fail = [&](const Error& error) {
    posix::standardErrorLines()(error.description);
    sight.trouble = true;
    return sight;
  };
  if (!shows) {
    if (const auto status = store.deliverDue(); !status) return fail(status.error());
  } else if (auto due = store.takeDue(again)) {
    sight.due = *std::move(due);
    if (!sight.due.empty()) sight.categories = store.categories();
  } else {
    return fail(due.error());
  }
  if (!wakes) return sight;
  const auto next = store.nextDue();
  if (!next) return fail(next.error());
  sight.next = *next;
  return sight;
}

/// `complete`: all that was refused and is still there is among it.
void NotificationDisplay::show(const Sight& sight, bool complete) {
  const auto isDue = [&](const auto& refusal) {
    return std::ranges::any_of(sight.due, [&](const auto& notification) {
      return notification.request.identifier == refusal.first;
    });
  };
  if (complete) std::erase_if(refusals_, [&](const auto& refusal) { return !isDue(refusal); });
  for (const auto& notification : sight.due) {
    present(notification.request, categoryOf(notification.request, sight.categories),
            [weak = weak_from_this(), notification](const Status& shown) {
              if (const auto self = weak.lock()) self->answered(notification, shown);
            });
  }
}

void NotificationDisplay::answered(const HeldNotification& notification, const Status& shown) {
  const auto& identifier = notification.request.identifier;
  if (shown) {
    refusals_.erase(identifier);
    return;
  }
  store_.run([notification](NotificationStore& store) { store.putBack(notification); });
  Refusal refusal{notification.due,
                  "The notification \"" + identifier + "\" is not shown: " + shown.error().description};
  auto& told = refusals_[identifier];
  if (!(told == refusal)) posix::standardErrorLines()(refusal.line);
  told = std::move(refusal);
  retryLater();
  wait();
}

void NotificationDisplay::retryLater() {
  if (!retry_) retry_ = ports_.store->clock()->now() + troublePause;
}

void NotificationDisplay::wait() {
  if (!ports_.wakeUp) return;
  if (!next_ && !retry_) return ports_.wakeUp->cancel();
  const double time = !retry_ ? *next_ : next_ ? std::min(*next_, *retry_) : *retry_;
  ports_.wakeUp->at(time, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->look();
  });
}

void NotificationDisplay::present(const NotificationRequest& request, const NotificationCategory& category,
                                  NotificationPresenter::Shown shown) {
  if (ports_.badge && request.content.badge) ports_.badge->show(*request.content.badge);
  if (!ports_.presenter) return shown(Done{});
  ports_.presenter->show(request, category, std::move(shown));
}

void NotificationDisplay::takeAway(const std::vector<std::string>& identifiers) {
  if (other_) return other_->takeAway(identifiers);
  if (ports_.presenter) ports_.presenter->takeAway(identifiers);
}

}  // namespace VorselKelp::system
