#include "gateway/ServedTest.h"

#include <chrono>
#include <utility>

#include "gateway/identity/DeskIdentity.h"

namespace gateway {

void Hop::deliver(Notification notification, Answered answered) {
  const std::lock_guard lock(mutex);
  taken.push_back(std::move(notification));
  more_.notify_all();
  holds ? held_.push_back(std::move(answered)) : answered({});
}

void Hop::release(const Answer& answer) {
  std::thread([&] {
    const std::lock_guard lock(mutex);
    for (auto& held : std::exchange(held_, {})) held(answer);
  }).join();
}

void Hop::waitFor(std::size_t notifications) {
  std::unique_lock lock(mutex);
  more_.wait_for(lock, std::chrono::seconds(20), [&] { return taken.size() >= notifications; });
}

void ServedTest::start(Limits limits) {
  const auto identity = deskIdentity(folder_.path());
  ASSERT_TRUE(identity.ok());
  GatewayOptions options;
  options.certificate = identity->certificate;
  options.key = identity->key;
  options.checks.open = true;
  options.hops = {hop};
  options.log = log;
  options.limits = limits;
  auto made = Gateway::make(std::move(options));
  ASSERT_TRUE(made.ok());
  served = *std::move(made);
  thread_ = std::thread([this] { served->run(); });
}

void ServedTest::stop() {
  if (!thread_.joinable()) return;
  served->stop();
  thread_.join();
}

}  // namespace gateway
