#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "VorselKelpTesting/MemoryPlatform.h"

namespace VorselKelp {
class Kellp;
}

namespace brellixctl {

/// What all devices of a fleet share.
struct FleetServices {
  VorselKelp::platform::Endpoints endpoints;
  std::shared_ptr<VorselKelp::platform::URLSession> session;
  std::shared_ptr<VorselKelp::platform::MainQueue> mainQueue;
  std::shared_ptr<VorselKelp::platform::Clock> clock;
  std::shared_ptr<VorselKelp::platform::Random> random;
  std::shared_ptr<VorselKelp::platform::Console> console;
  std::string apiKey;
};

/// One phone of a fleet, in memory: an application whose user allows notifications. Main thread.
class FleetDevice {
 public:
  /// Model and language follow from `number`.
  FleetDevice(const FleetServices& shared, std::size_t number);
  ~FleetDevice();

  /// Starts the application, which registers its token.
  void launch();
  /// 32 bytes.
  [[nodiscard]] const std::string& token() const { return token_; }

  /// Lets a service extension prepare a notification, shows it, and opens it where `opens` says so. `done`
  /// runs once, on the main queue; the device must live until then. `session` is the extension's; null: the
  /// fleet's.
  void push(const VorselKelp::platform::UserInfo& payload, const std::string& identifier, bool opens,
            std::function<void()> done, std::shared_ptr<VorselKelp::platform::URLSession> session = nullptr);
  /// Shows a notification that no extension has changed. The user looks at it at once, and either opens it or
  /// wipes it away.
  void show(VorselKelp::platform::NotificationRequest request, bool opens);
  /// Hands a silent push to the application.
  void handOver(const VorselKelp::platform::UserInfo& payload);

 private:
  std::shared_ptr<VorselKelp::platform::Platform> adapt(
      VorselKelp::testing_platform::MemoryPlatform& process) const;

  const FleetServices& shared_;
  const std::string token_;
  std::shared_ptr<VorselKelp::testing_platform::MemoryDevice> device_;
  VorselKelp::testing_platform::MemoryPlatform process_;
  std::shared_ptr<VorselKelp::Kellp> application_;
};

}  // namespace brellixctl
