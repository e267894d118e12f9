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
  /// Lets a service extension prepare a notification, shows it, and opens it where `opens` says so. `done`
  /// runs once, on the main queue; the device must live until then.
  void push(const VorselKelp::platform::UserInfo& payload, const std::string& identifier, bool opens,
            std::function<void()> done);

 private:
  std::shared_ptr<VorselKelp::platform::Platform> adapt(
      VorselKelp::testing_platform::MemoryPlatform& process) const;
  void show(VorselKelp::platform::NotificationRequest request, bool opens);

  const FleetServices& shared_;
  std::shared_ptr<VorselKelp::testing_platform::MemoryDevice> device_;
  VorselKelp::testing_platform::MemoryPlatform process_;
  std::shared_ptr<VorselKelp::Kellp> application_;
};

}  // namespace brellixctl
