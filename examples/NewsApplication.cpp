#include "NewsApplication.h"

#include "FacadeNews.h"
#include "FrontPage.h"
#include "NewsDelegate.h"
#include "VorselKelp/VorselKellp.h"

namespace news {
namespace {

using namespace VorselKelp;
using simulator::ApplicationProcess;
using simulator::Manifest;

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

class CoreNews final : public simulator::ApplicationDelegate {
 public:
  void willFinishLaunching(ApplicationProcess& process) override {
    VorselKellp::setValueFor(process.manifest().appGroupId.value_or(""));
    delegate_ = std::make_shared<NewsDelegate>(process);
    VorselKellp::setVorselDelegate(delegate_);
  }

  void didFinishLaunching(ApplicationProcess& process) override {
    VorselKellp::initialize(configurationOf(process.manifest()));
  }

  void simulatorIsQuiet(ApplicationProcess& process) override {
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
  std::shared_ptr<NewsDelegate> delegate_;
};

template <class Record>
JSONAny namesOf(const std::vector<Record>& records) {
  JSONAny::List names;
  for (const auto& record : records) names.push_back(record.id);
  return names;
}

}  // namespace

NewsApplication::NewsApplication() : news_(std::make_unique<CoreNews>()) {}

std::shared_ptr<ui::ViewController> NewsApplication::makeRootController() {
  return std::make_shared<FrontPage>();
}

void NewsApplication::willFinishLaunching(ApplicationProcess& process) {
  if (process.manifest().layer == Manifest::Layer::facade) news_ = makeFacadeNews();
  news_->willFinishLaunching(process);
}

void NewsApplication::didFinishLaunching(ApplicationProcess& process) {
  news_->didFinishLaunching(process);
}

void NewsApplication::simulatorIsQuiet(ApplicationProcess& process) {
  news_->simulatorIsQuiet(process);
}

void NewsApplication::didRegisterForRemoteNotifications(std::span<const std::uint8_t> token) {
  news_->didRegisterForRemoteNotifications(token);
}

void NewsApplication::didReceive(const platform::NotificationResponse& response, bool handle,
                                 std::function<void(std::optional<std::string>)> completion) {
  news_->didReceive(response, handle, std::move(completion));
}

void NewsApplication::didReceiveRemoteNotification(ApplicationProcess& process,
                                                   const platform::UserInfo& userInfo) {
  VorselKellp::didReciveAdministrativeNotificationWith(
      userInfo, [&process](const std::optional<Geofences>& geofences, const std::optional<Beacons>& beacons) {
        process.noteDelegateCall(
            "didReciveAdministrativeNotificationWith",
            {geofences ? namesOf(geofences->gl) : JSONAny(), beacons ? namesOf(beacons->bl) : JSONAny()});
      });
}

}  // namespace news
