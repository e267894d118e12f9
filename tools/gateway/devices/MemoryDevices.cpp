#include "gateway/devices/MemoryDevices.h"

#include <chrono>
#include <cstdint>
#include <utility>

#include "gateway/devices/DeviceToken.h"

namespace gateway {

namespace {

constexpr std::size_t mostWaiting = 200'000;

std::int64_t timeNow() {
  return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

}  // namespace

MemoryDevices::MemoryDevices(const std::vector<std::string>& tokens, std::string topic,
                             std::function<void()> wake)
    : topic_(std::move(topic)), wake_(std::move(wake)) {
  numbers_.reserve(tokens.size());
  for (std::size_t number = 0; number < tokens.size(); ++number) numbers_.emplace(tokens[number], number);
}

bool MemoryDevices::takes(std::string_view device) const {
  return device.size() == deviceTokenBytes;
}

void MemoryDevices::deliver(Notification notification, Answered answered) {
  const auto device = numbers_.find(notification.device);
  if (device == numbers_.end()) return answered({400, "BadDeviceToken"});
  if (!topic_.empty() && notification.topic != topic_) return answered({400, "DeviceTokenNotForTopic"});
  // What has expired before it came was to be delivered at once or not at all: at once it is.
  if (notification.expiration && *notification.expiration <= timeNow()) notification.expiration.reset();
  if (!queue({device->second, std::move(notification), std::chrono::steady_clock::now()}))
    return answered({429, "TooManyRequests", {}, "1"});
  if (wake_) wake_();
  answered({});
}

bool MemoryDevices::queue(Arrived arrived) {
  const std::lock_guard lock(mutex_);
  if (waiting_.size() == mostWaiting) return false;
  waiting_.push_back(std::move(arrived));
  return true;
}

std::optional<MemoryDevices::Arrived> MemoryDevices::next() {
  const std::lock_guard lock(mutex_);
  while (!waiting_.empty()) {
    auto first = std::move(waiting_.front());
    waiting_.pop_front();
    const auto& expiration = first.notification.expiration;
    if (!expiration || *expiration > timeNow()) return first;
    ++expired_;
  }
  return std::nullopt;
}

std::size_t MemoryDevices::expired() const {
  const std::lock_guard lock(mutex_);
  return expired_;
}

}  // namespace gateway
