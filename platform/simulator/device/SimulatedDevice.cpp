#include "VorselKelpSimulator/SimulatedDevice.h"

#include <algorithm>

#include "VorselKelpPosix/Services.h"
#include "VorselKelpPosix/SystemRandom.h"
#include "VorselKelpSimulator/DeviceHome.h"
#include "device/DeviceFile.h"
#include "device/MovableClock.h"

namespace VorselKelp::simulator {
namespace {

constexpr std::size_t tokenBytes = 32;
constexpr std::size_t goneKept = 16;  // tokens

/// From now on nothing reaches the application's token.
void retire(DeviceFile::Registration& registration) {
  auto& gone = registration.gone;
  registration.registered = false;
  gone.insert_or_assign(registration.token, posix::makeClock()->now());
  while (gone.size() > goneKept)
    gone.erase(std::ranges::min_element(gone, {}, [](const auto& each) { return each.second; }));
}

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
    registration.gone.erase(token);
  });
  if (!status) return status.error();
  return token;
}

void SimulatedDevice::unregisterForRemoteNotifications() {
  if (!remoteToken()) return;
  file_->report(
      file_->change([&](DeviceFile::Contents& contents) { retire(contents.registrations[application_]); }));
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

Result<TokenStanding> SimulatedDevice::standingOf(const std::string& token) {
  const auto contents = file_->read();
  if (!contents) return contents.error();
  const auto found = contents->registrations.find(application_);
  if (found == contents->registrations.end()) return TokenStanding();
  const auto& registration = found->second;
  TokenStanding standing{registration.registered && registration.token == token};
  if (const auto gone = registration.gone.find(token); gone != registration.gone.end())
    standing.gone = gone->second;
  return standing;
}

Status SimulatedDevice::forget() {
  const auto retired = file_->change([&](DeviceFile::Contents& contents) {
    const auto found = contents.registrations.find(application_);
    if (found == contents.registrations.end() || found->second.token.empty()) return;
    if (found->second.registered) retire(found->second);
    found->second.token.clear();
  });
  return retired ? NotificationStore::forget() : retired;
}

Result<bool> SimulatedDevice::isOff() {
  const auto contents = file_->read();
  if (!contents) return contents.error();
  return contents->off;
}

Status SimulatedDevice::setOff(bool off) {
  return file_->change([&](DeviceFile::Contents& contents) { contents.off = off; });
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
