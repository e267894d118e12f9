#include "gateway/devices/DeskApplication.h"

#include <utility>

#include "VorselKelpPosix/LineSink.h"
#include "phone/Push.h"

namespace gateway {

using VorselKelp::Result;
using VorselKelp::posix::standardErrorLines;
namespace simulator = VorselKelp::simulator;

namespace {

constexpr double milli = 1000;

void tellFailure(const Result<phone::PushOutcome>& outcome) {
  const auto& failure = outcome ? outcome->failure : outcome.error().description;
  if (!failure.empty()) standardErrorLines()(failure);
}

}  // namespace

DeskApplication::DeskApplication(const phone::Target& target)
    : target_(target),
      device_(target.home, target.manifest.bundleIdentifier),
      arrivals_(target.arrivals()),
      worker_([this](const std::stop_token& stop) { work(stop); }) {}

Result<std::optional<Answer>> DeskApplication::take(const Notification& notification) {
  const auto standing = device_.standingOf(notification.device);
  if (!standing) return standing.error();
  if (!standing->registered && !standing->gone) return std::optional<Answer>();
  if (notification.topic != target_.manifest.bundleIdentifier)
    return std::optional<Answer>({400, "DeviceTokenNotForTopic"});
  if (!standing->registered)
    return std::optional<Answer>({410, "Unregistered", static_cast<std::int64_t>(*standing->gone * milli)});
  return std::optional<Answer>(keep(notification));
}

Answer DeskApplication::keep(const Notification& notification) {
  const auto& shownUnder = notification.collapse.empty() ? notification.identifier : notification.collapse;
  const auto place = arrivals_.put({shownUnder, notification.payload}, notification.expiration);
  if (!place) {
    standardErrorLines()(place.error().description);
    return {503, "ServiceUnavailable"};
  }
  if (*place == simulator::Arrivals::Place::underWay) {
    const std::lock_guard lock(mutex_);
    arrived_ = true;
    changed_.notify_one();
  }
  return {};
}

void DeskApplication::work(const std::stop_token& stop) {
  std::unique_lock lock(mutex_);
  while (changed_.wait(lock, stop, [this] { return arrived_; })) {
    arrived_ = false;
    lock.unlock();
    const auto status =
        phone::deliverArrived(target_, stop, [](const auto& outcome) { tellFailure(outcome); });
    if (!status) standardErrorLines()(status.error().description);
    lock.lock();
    if (stop.stop_requested()) return;
  }
}

}  // namespace gateway
