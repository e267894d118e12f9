#include "gateway/devices/DeskDevices.h"

#include <utility>

#include "gateway/devices/DeskApplication.h"
#include "gateway/devices/DeviceToken.h"

namespace gateway {

namespace {

constexpr std::size_t mostRemembered = 1000;

}  // namespace

DeskDevices::DeskDevices(const std::vector<phone::Target>& targets) {
  for (const auto& target : targets) applications_.push_back(std::make_unique<DeskApplication>(target));
}

DeskDevices::~DeskDevices() {
  intake_.close();
}

bool DeskDevices::takes(std::string_view device) const {
  return device.size() == deviceTokenBytes;
}

void DeskDevices::deliver(Notification notification, Answered answered) {
  intake_.post([this, notification = std::move(notification), answered = std::move(answered)]() mutable {
    answered(take(notification));
  });
}

Answer DeskDevices::take(const Notification& notification) {
  Answer answer{400, "BadDeviceToken"};
  const auto known = remembered_.find(notification.device);
  if (known != remembered_.end() && ask(known->second, notification, answer)) return answer;
  for (std::size_t number = 0; number < applications_.size(); ++number) {
    if (!ask(number, notification, answer)) continue;
    if (remembered_.size() == mostRemembered) remembered_.clear();
    remembered_.insert_or_assign(notification.device, number);
    return answer;
  }
  return answer;
}

/// False when the token is none of the application's. One whose home can't be read may have had it.
bool DeskDevices::ask(std::size_t number, const Notification& notification, Answer& answer) {
  const auto taken = applications_[number]->take(notification);
  if (!taken) answer = {503, "ServiceUnavailable"};
  if (!taken || !*taken) return false;
  answer = **taken;
  return true;
}

}  // namespace gateway
