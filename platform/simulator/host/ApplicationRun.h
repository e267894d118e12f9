#pragma once

#include <memory>
#include <string>
#include <vector>

#include "VorselKelpSimulator/ApplicationHost.h"
#include "VorselKelpSimulator/OperationTable.h"
#include "VorselKelpSimulator/ProcessScreen.h"
#include "host/HostedProcess.h"
#include "host/PictureTaker.h"
#include "host/ScreenBadge.h"

namespace VorselKelp::simulator {

struct PreparedCall {
  const OperationTable::Operation* operation;
  JSONAny::List arguments;
};

/// One process of an application, from its first moment to its last.
class ApplicationRun final : public ApplicationProcess {
 public:
  ApplicationRun(ProcessOptions options, Manifest manifest, ApplicationDelegate& application,
                 ProcessScreen& screen);

  int run(const std::vector<PreparedCall>& calls);

  [[nodiscard]] const Manifest& manifest() const override { return process_.manifest; }
  std::shared_ptr<ui::ViewController> rootController() override { return rootController_; }
  std::shared_ptr<platform::ViewPresenter> presenter() override { return presenter_; }
  void screenAppeared() override { device_.application->screenAppeared(); }
  void screenDisappeared() override { device_.application->screenDisappeared(); }
  void noteDelegateCall(std::string_view name, JSONAny::List arguments) override;

 private:
  struct DeviceSide {
    std::shared_ptr<SimulatedDevice> device;
    std::shared_ptr<SimulatedUser> user;
    std::shared_ptr<system::NotificationCenter> notificationCenter;
    std::shared_ptr<system::RunningApplication> application;
    std::shared_ptr<ScreenBadge> badge;
    std::shared_ptr<DeviceLocation> location;
  };

  Result<ProcessScreen::Services> openScreen();
  void makeDeviceSide(ProcessScreen::Services& screen);
  Result<std::shared_ptr<platform::Platform>> makeServices();
  void start(const std::vector<PreparedCall>& calls);
  int respond(const ProcessOptions::Tap& tap);
  int notify(const std::string& identifier);
  int startInBackground();
  void handOver(const platform::NotificationResponse& response, bool handle);
  void call(const PreparedCall& prepared, std::size_t number);
  void feedBeacons();
  bool settle();
  void end();

  const HostedProcess process_;
  ApplicationDelegate& delegate_;
  ProcessScreen& screen_;
  std::shared_ptr<ui::ViewController> rootController_;
  DeviceSide device_;
  std::shared_ptr<platform::ViewPresenter> presenter_;
  decltype(ProcessScreen::Services::notify) notify_;
  bool responded_ = false;  ///< to what was shown on the desktop
};

}  // namespace VorselKelp::simulator
