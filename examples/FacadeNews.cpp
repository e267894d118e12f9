#include "FacadeNews.h"

#include "BrellixPush/BrellixPushSDK.h"

namespace news {
namespace {

using BrellixPush::BrellixPushSDK;
using VorselKelp::simulator::ApplicationProcess;
using VorselKelp::simulator::Manifest;

/// Tells whoever started the application what the publisher's application would act upon.
class PublisherDelegate final : public BrellixPush::BrellixPushSDKDelegate {
 public:
  explicit PublisherDelegate(ApplicationProcess& process) : process_(process) {}

  void notificationTokenChanged(const std::string& token) override {
    process_.noteDelegateCall("notificationTokenChanged", {token});
  }
  void brellixPushSDKInited(bool success) override {
    process_.noteDelegateCall("brellixPushSDKInited", {success});
  }

 private:
  ApplicationProcess& process_;
};

std::shared_ptr<BrellixPush::BrellixPushSDKConfig> publisherConfigurationOf(const Manifest& manifest) {
  BrellixPush::BrellixPushSDKBuilder builder(manifest.apiKey, manifest.appGroupId);
  const auto& switches = manifest.switches;
  if (switches.push.value_or(false)) builder.push();
  if (switches.custom.value_or(false)) builder.custom();
  if (switches.crash.value_or(false)) builder.crash();
  if (switches.analytics) builder.analytics(*switches.analytics);
  return builder.build();
}

class FacadeNews final : public VorselKelp::simulator::ApplicationDelegate {
 public:
  void willFinishLaunching(ApplicationProcess& process) override {
    BrellixPushSDK::setValueFor(process.manifest().appGroupId.value_or(""));
    delegate_ = std::make_shared<PublisherDelegate>(process);
    BrellixPushSDK::setBrellixDelegate(delegate_);
  }

  void didFinishLaunching(ApplicationProcess& process) override {
    BrellixPushSDK::initialize(publisherConfigurationOf(process.manifest()));
    // After the configuration, which makes the events anonymous.
    if (const auto& publisher = process.manifest().publisher) {
      BrellixPushSDK::initialize(publisher->id, publisher->source);
    }
  }

  void simulatorIsQuiet(ApplicationProcess& process) override {
    BrellixPushSDK::askForNotificationPermissionWith(process.rootController());
  }

  void didRegisterForRemoteNotifications(std::span<const std::uint8_t> token) override {
    BrellixPushSDK::registerDeviceToken(token);
  }

  void didReceive(const VorselKelp::platform::NotificationResponse& response, bool handle,
                  std::function<void(std::optional<std::string>)> completion) override {
    BrellixPushSDK::pushTrackOpen(handle, response, std::move(completion));
  }

 private:
  std::shared_ptr<PublisherDelegate> delegate_;
};

}  // namespace

std::unique_ptr<VorselKelp::simulator::ApplicationDelegate> makeFacadeNews() {
  return std::make_unique<FacadeNews>();
}

}  // namespace news
