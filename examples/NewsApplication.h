#pragma once

#include <memory>

#include "VorselKelpSimulator/ApplicationHost.h"

namespace news {

/// A news application: starts the library, hands it the device token, and passes the user's taps on. It
/// speaks to the library itself or to the publisher's layer above it, as the manifest says; a real
/// application would know at compile time.
class NewsApplication final : public VorselKelp::simulator::ApplicationDelegate {
 public:
  NewsApplication();
  std::shared_ptr<VorselKelp::ui::ViewController> makeRootController() override;
  void willFinishLaunching(VorselKelp::simulator::ApplicationProcess& process) override;
  void didFinishLaunching(VorselKelp::simulator::ApplicationProcess& process) override;
  void simulatorIsQuiet(VorselKelp::simulator::ApplicationProcess& process) override;
  void didRegisterForRemoteNotifications(std::span<const std::uint8_t> token) override;
  void didReceive(const VorselKelp::platform::NotificationResponse& response, bool handle,
                  std::function<void(std::optional<std::string>)> completion) override;
  void didReceiveRemoteNotification(VorselKelp::simulator::ApplicationProcess& process,
                                    const VorselKelp::platform::UserInfo& userInfo) override;

 private:
  std::unique_ptr<VorselKelp::simulator::ApplicationDelegate> news_;
};

}  // namespace news
