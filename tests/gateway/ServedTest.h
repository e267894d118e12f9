#pragma once

#include <gmock/gmock.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include "gateway/Client.h"
#include "gateway/Gateway.h"
#include "posix/support/TemporaryFolder.h"

namespace gateway {

/// Takes every token, and answers at once or when it is told to.
class Hop final : public NextHop {
 public:
  [[nodiscard]] bool takes(std::string_view device) const override { return device != "\xff"; }
  void deliver(Notification notification, Answered answered) override;
  /// Answers what was held back, on a thread of its own.
  void release(const Answer& answer);
  void waitFor(std::size_t notifications);

  bool holds = false;
  std::vector<Notification> taken;  ///< under `mutex`
  std::mutex mutex;

 private:
  std::condition_variable more_;
  std::vector<Answered> held_;
};

/// A gateway on loopback that takes anyone.
class ServedTest : public testing::Test {
 protected:
  ~ServedTest() override { stop(); }

  void start(Limits limits = {});
  void stop();

  static constexpr const char* path = "/3/device/abcd";
  const Client::Fields fields{{"apns-topic", "com.example.app"}};
  const std::string payload = R"({"aps":{"alert":"Hello"}})";
  const std::shared_ptr<Hop> hop = std::make_shared<Hop>();
  std::function<void(const Record&)> log;  ///< set before start()
  std::unique_ptr<Gateway> served;

 private:
  VorselKelp::testing_support::TemporaryFolder folder_;
  std::thread thread_;
};

}  // namespace gateway
