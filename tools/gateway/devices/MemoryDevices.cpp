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
                             std::shared_ptr<VorselKelp::platform::MainQueue> queue, Receive receive)
    : topic_(std::move(topic)), queue_(std::move(queue)), waiting_(std::make_shared<Waiting>()) {
  waiting_->receive = std::move(receive);
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
  if (waiting_->count >= mostWaiting) return answered({429, "TooManyRequests", {}, "1"});
  // What has expired before it came was to be delivered at once or not at all: at once it is.
  const auto arrived = timeNow();
  if (notification.expiration && *notification.expiration <= arrived) notification.expiration.reset();
  ++waiting_->count;
  queue_->async(
      [waiting = waiting_, number = device->second, notification = std::move(notification)]() mutable {
        --waiting->count;
        if (notification.expiration && *notification.expiration <= timeNow()) return;
        waiting->receive(number, std::move(notification));
      });
  answered({});
}

}  // namespace gateway
