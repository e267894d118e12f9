#include "notifications/NotificationDisplay.h"

#include <algorithm>
#include <utility>

#include "VorselKelpPosix/LineSink.h"

namespace VorselKelp::system {
namespace {

using platform::NotificationCategory;
using platform::NotificationRequest;

/// Seconds until a store that failed is asked again.
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
  store_.read(
      ports_.mainQueue, [=](NotificationStore& store) { return lookInto(store, shows, wakes); },
      [weak = weak_from_this()](const Sight& sight) {
        const auto self = weak.lock();
        if (!self) return;
        self->show(sight);
        self->waitFor(sight);
      });
}

NotificationDisplay::Sight NotificationDisplay::lookInto(NotificationStore& store, bool shows, bool wakes) {
  Sight sight;
  const auto fail = [&](const Error& error) {
    posix::standardErrorLines()(error.description);
    sight.trouble = true;
    return sight;
  };
  if (!shows) {
    if (const auto status = store.deliverDue(); !status) return fail(status.error());
  } else if (auto due = store.takeDue()) {
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

void NotificationDisplay::show(const Sight& sight) {
  for (const auto& request : sight.due) {
    present(request, categoryOf(request, sight.categories),
            [identifier = request.identifier](const Status& shown) {
              if (shown) return;
              posix::standardErrorLines()("The notification \"" + identifier +
                                          "\" is not shown: " + shown.error().description);
            });
  }
}

void NotificationDisplay::waitFor(const Sight& sight) {
  if (!ports_.wakeUp) return;
  if (!sight.trouble && !sight.next) return ports_.wakeUp->cancel();
  ports_.wakeUp->at(sight.trouble ? ports_.store->clock()->now() + troublePause : *sight.next,
                    [weak = weak_from_this()] {
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
