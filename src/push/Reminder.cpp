#include "push/Reminder.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace VorselKelp {
namespace {

/// Meant to be filled with a fresh identifier once; every installation carries this very text, and it makes a
/// new reminder replace the old one.
constexpr const char* reminderIdentifier = "UUID().uuidString";
constexpr double shortestInterval = 60;  // the system takes no shorter repeating interval

}  // namespace

void Reminder::setText(const std::string& text) {
  context_->storage.set(StorageKey::notificationText, text);
  context_->storage.synchronize();
}

void Reminder::schedule(double interval) {
  auto& storage = context_->storage;
  if (!storage.flag(StorageKey::push)) {
    context_->print("Cannot schedule notifications, please enable push");
    return;
  }
  if (!std::isfinite(interval)) {
    context_->print("Cannot schedule notifications, the interval is no number of seconds");
    return;
  }
  storage.set(StorageKey::scheduledId, reminderIdentifier);
  platform::NotificationRequest request;
  request.identifier = reminderIdentifier;
  request.content.title = storage.text(StorageKey::notificationText).value_or("Hey, we are missing you!");
  request.content.subtitle = "Check our app again.";
  request.content.sound = platform::NotificationSound::defaultSound();
  request.trigger = platform::TimeIntervalTrigger{std::max(interval, shortestInterval), true};
  context_->services->notificationCenter->add(std::move(request));
}

void Reminder::cancel() {
  auto& storage = context_->storage;
  const auto identifier = storage.text(StorageKey::scheduledId);
  if (!identifier) return;
  storage.remove(StorageKey::scheduledId);
  storage.synchronize();
  context_->services->notificationCenter->removePendingNotificationRequests({*identifier});
  context_->services->notificationCenter->removeDeliveredNotifications({*identifier});
}

void Reminder::update() {
  const auto interval = context_->storage.real(StorageKey::schedulerInterval);
  if (!interval) return;
  if (std::isfinite(*interval)) cancel();  // an interval that is refused leaves the old reminder alone
  schedule(*interval);
}

}  // namespace VorselKelp
