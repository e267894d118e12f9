#include "VorselKelpSimulator/SimulatedDevice.h"

#include "VorselKelpPosix/SystemRandom.h"
#include "VorselKelpSimulator/DeviceHome.h"
#include "device/DeviceFile.h"
#include "device/MovableClock.h"

namespace VorselKelp::simulator {
namespace {

constexpr std::size_t tokenBytes = 32;

double offsetIn(DeviceFile& file) {
  const auto contents = file.read();
  if (contents) return contents->clockOffset;
  file.report(contents.error());
  return 0;
}

}  // namespace

SimulatedDevice::SimulatedDevice(const DeviceHome& home, std::string application)
    : SimulatedDevice(home, std::move(application), std::make_shared<DeviceFile>(home.deviceFile())) {}

SimulatedDevice::SimulatedDevice(const DeviceHome& home, std::string application,
                                 const std::shared_ptr<DeviceFile>& file)
    : system::NotificationStore(home.path(), application,
                                makeMovableClock([file] { return offsetIn(*file); })),
      application_(std::move(application)),
      file_(file) {}

Result<std::string> SimulatedDevice::registerForRemoteNotifications() {
  auto token = posix::randomBytes(tokenBytes);
  if (token.size() != tokenBytes) return Error{"the device could not make a token"};
  const auto status = file_->change([&](DeviceFile::Contents& contents) {
    auto& registration = contents.registrations[application_];
    if (registration.token.empty()) registration.token = token;
    registration.registered = true;
    token = registration.token;
  });
  if (!status) return status.error();
  return token;
}

void SimulatedDevice::unregisterForRemoteNotifications() {
  if (!remoteToken()) return;
  file_->report(file_->change(
      [&](DeviceFile::Contents& contents) { contents.registrations[application_].registered = false; }));
}

std::optional<std::string> SimulatedDevice::remoteToken() {
  auto contents = file_->read();
  if (!contents) {
    file_->report(contents.error());
    return std::nullopt;
  }
  const auto found = contents->registrations.find(application_);
  if (found == contents->registrations.end() || !found->second.registered) return std::nullopt;
  return std::move(found->second.token);
}

double SimulatedDevice::clockOffset() {
  return offsetIn(*file_);
}

Status SimulatedDevice::advanceClock(double seconds) {
  if (seconds != 0) {
    const auto moved =
        file_->change([&](DeviceFile::Contents& contents) { contents.clockOffset += seconds; });
    if (!moved) return moved;
  }
  return deliverDue();
}

}  // namespace VorselKelp::simulator
