#include "VorselKelpSimulator/DeviceServices.h"

namespace VorselKelp::simulator {
namespace {

class DeviceRegistration final : public system::RemoteRegistration,
                                 public std::enable_shared_from_this<DeviceRegistration> {
 public:
  DeviceRegistration(std::shared_ptr<SimulatedDevice> device, std::shared_ptr<platform::MainQueue> mainQueue,
                     std::function<void(Result<std::string>)> registered)
      : device_(std::move(device)), mainQueue_(std::move(mainQueue)), registered_(std::move(registered)) {}

  void begin() override {
    mainQueue_->async([weak = weak_from_this()] {
      if (const auto self = weak.lock()) self->registered_(self->device_->registerForRemoteNotifications());
    });
  }
  void end() override { device_->unregisterForRemoteNotifications(); }

 private:
  const std::shared_ptr<SimulatedDevice> device_;
  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const std::function<void(Result<std::string>)> registered_;
};

class ToldOpener final : public system::UrlOpener {
 public:
  explicit ToldOpener(std::function<void(const std::string&)> opened) : opened_(std::move(opened)) {}
  void open(const std::string& url) override { opened_(url); }

 private:
  const std::function<void(const std::string&)> opened_;
};

}  // namespace

std::shared_ptr<system::RunningApplication> makeApplication(
    std::shared_ptr<SimulatedDevice> device, std::shared_ptr<platform::MainQueue> mainQueue,
    std::function<void(Result<std::string>)> registered, std::function<void(const std::string& url)> opened,
    std::shared_ptr<system::Badge> badge) {
  system::ApplicationPorts ports;
  ports.store = device;
  ports.registration =
      std::make_shared<DeviceRegistration>(std::move(device), std::move(mainQueue), std::move(registered));
  ports.urlOpener = std::make_shared<ToldOpener>(std::move(opened));
  ports.badge = std::move(badge);
  return system::makeRunningApplication(std::move(ports));
}

}  // namespace VorselKelp::simulator
