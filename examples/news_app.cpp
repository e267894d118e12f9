// A news application: starts the library, hands it the device token, and passes the user's taps on.

#include "FacadeNews.h"
#include "NewsDelegate.h"
#include "VorselKelp/VorselKellp.h"
#include "VorselKelpLinux/OperationTable.h"

namespace {

using namespace VorselKelp;
using linux_platform::ApplicationProcess;
using linux_platform::Manifest;

/// A real application would write these values down here; this one takes them from its manifest.
std::shared_ptr<VorselConfig> configurationOf(const Manifest& manifest) {
  VorselBuilder builder(manifest.apiKey, manifest.appGroupId);
  const auto& switches = manifest.switches;
  if (switches.push.value_or(false)) builder.push();
  if (switches.custom.value_or(false)) builder.custom();
  if (switches.crash.value_or(false)) builder.crash();
  if (switches.adex.value_or(false)) builder.adex();
  if (switches.analytics) builder.analytics(*switches.analytics);
  if (switches.beacon) builder.beacon(*switches.beacon);
  if (switches.geofence) builder.geofence(*switches.geofence);
  if (switches.location) builder.locationTracking(*switches.location);
  if (manifest.schedule) builder.scheduleNotifications(*manifest.schedule);
  return builder.build();
}

class CoreNews final : public linux_platform::ApplicationDelegate {
 public:
  void willFinishLaunching(ApplicationProcess& process) override {
    VorselKellp::setValueFor(process.manifest().appGroupId.value_or(""));
    delegate_ = std::make_shared<news::NewsDelegate>(process);
    VorselKellp::setVorselDelegate(delegate_);
  }

  void didFinishLaunching(ApplicationProcess& process) override {
    VorselKellp::initialize(configurationOf(process.manifest()));
  }

  void didSettle(ApplicationProcess& process) override {
    VorselKellp::askForNotificationPermissionWith(process.rootController());
  }

  void didRegisterForRemoteNotifications(std::span<const std::uint8_t> token) override {
    VorselKellp::registerToken(token);
  }

  void didReceive(const platform::NotificationResponse& response, bool handle,
                  std::function<void(std::optional<std::string>)> completion) override {
    VorselKellp::pushTrackOpen(handle, response, std::move(completion));
  }

 private:
  std::shared_ptr<news::NewsDelegate> delegate_;
};

/// Speaks to the library itself or to the publisher's layer above it, as the manifest says; a real
/// application would know at compile time.
class NewsApplication final : public linux_platform::ApplicationDelegate {
 public:
  void willFinishLaunching(ApplicationProcess& process) override {
    if (process.manifest().layer == Manifest::Layer::facade) news_ = news::makeFacadeNews();
    news_->willFinishLaunching(process);
  }
  void didFinishLaunching(ApplicationProcess& process) override { news_->didFinishLaunching(process); }
  void didSettle(ApplicationProcess& process) override { news_->didSettle(process); }
  void didRegisterForRemoteNotifications(std::span<const std::uint8_t> token) override {
    news_->didRegisterForRemoteNotifications(token);
  }
  void didReceive(const platform::NotificationResponse& response, bool handle,
                  std::function<void(std::optional<std::string>)> completion) override {
    news_->didReceive(response, handle, std::move(completion));
  }

 private:
  std::unique_ptr<linux_platform::ApplicationDelegate> news_ = std::make_unique<CoreNews>();
};

}  // namespace

int main(int argc, char** argv) {
  NewsApplication application;
  return linux_platform::runApplication(argc, argv, application, linux_platform::publicOperations());
}
