#include "BrellixPush/BrellixPushSDK.h"

#include <utility>

#include "base/FatalError.h"
#include "core/CoreContext.h"
#include "core/CoreScope.h"
#include "facade/BrellixPushInternalDelegate.h"
#include "facade/Facade.h"
#include "facade/PermissionOutcome.h"

namespace BrellixPush {
namespace {

using VorselKelp::CoreContext;
using VorselKelp::VorselKellp;

/// Stands in until the application names its publisher.
constexpr const char* unnamedPublisher = "-999";

std::shared_ptr<CoreContext> core() {
  return CoreContext::current("BrellixPushSDK");
}

/// Runs `call` with the facade's delegate on the main queue, if the application still has one then.
template <class Call>
void postToDelegate(const std::weak_ptr<CoreContext>& weak, Call call) {
  const auto context = weak.lock();
  if (!context) return;
  context->services->mainQueue->async([weak, call = std::move(call)] {
    const auto alive = weak.lock();
    const auto delegate = alive ? Facade::of(*alive)->delegate() : nullptr;
    if (delegate) call(*delegate);
  });
}

std::shared_ptr<BrellixPushInternalDelegate> makeBridge(const std::weak_ptr<CoreContext>& context) {
  return std::make_shared<BrellixPushInternalDelegate>(
      [context](bool success) {
        postToDelegate(context, [success](BrellixPushSDKDelegate& d) { d.brellixPushSDKInited(success); });
      },
      [context](const std::string& token) {
        postToDelegate(context, [token](BrellixPushSDKDelegate& d) { d.notificationTokenChanged(token); });
      });
}

std::shared_ptr<VorselKelp::VorselConfig> coreConfiguration(const std::shared_ptr<CoreContext>& context,
                                                            const BrellixPushSDKConfig& config) {
  const auto switches = config.storedSwitches();
  const VorselKelp::CoreScope scope(context);
  return std::make_shared<VorselKelp::VorselConfig>(config.apiKey(), config.appGroupId(), switches.crash,
                                                    switches.analytics, switches.push, switches.geofence,
                                                    switches.beacon, switches.custom, switches.location,
                                                    config.schedule(), false, config.consent());
}

}  // namespace

void BrellixPushSDK::initialize(const std::shared_ptr<BrellixPushSDKConfig>& config) {
  const auto context = core();
  if (!config) VorselKelp::fatalError("BrellixPushSDK::initialize: no configuration was given");
  const auto facade = Facade::of(*context);
  auto bridge = makeBridge(context);
  facade->keepBridge(bridge);
  facade->setTracker(std::make_shared<BrellixEventTracker>(context, unnamedPublisher, config->apiKey()));
  VorselKellp::setVorselDelegate(bridge);
  VorselKellp::initialize(coreConfiguration(context, *config));
}

void BrellixPushSDK::initialize(const std::string& publisherId, const std::string& source) {
  const auto context = core();
  Facade::of(*context)->setTracker(std::make_shared<BrellixEventTracker>(context, publisherId, source));
}

void BrellixPushSDK::setBrellixDelegate(std::weak_ptr<BrellixPushSDKDelegate> delegate) {
  Facade::of(*core())->setDelegate(std::move(delegate));
}

std::shared_ptr<BrellixPushSDKDelegate> BrellixPushSDK::brellixDelegate() {
  return Facade::of(*core())->delegate();
}

void BrellixPushSDK::setValueFor(const std::string& appGroupId) {
  nameAppGroup(*core(), appGroupId);
}

void BrellixPushSDK::registerDeviceToken(std::span<const std::uint8_t> deviceToken) {
  VorselKellp::registerToken(deviceToken);
}

void BrellixPushSDK::askForNotificationsPermission() {
  const auto outcome = std::make_shared<PermissionOutcome>(core());
  outcome->begin();
  outcome->request();
  VorselKellp::askForNotificationsPermission();
}

void BrellixPushSDK::askForNotificationPermissionWith(
    const std::shared_ptr<VorselKelp::ui::ViewController>& controller) {
  const auto context = core();
  const auto outcome = std::make_shared<PermissionOutcome>(context);
  outcome->begin();
  context->services->mainQueue->async(
      [outcome, weak = std::weak_ptr(context), from = std::weak_ptr(controller)] {
        const auto alive = weak.lock();
        if (!alive || CoreContext::installed() != alive) return;  // another core took over meanwhile
        outcome->request();
        VorselKellp::askForNotificationPermissionWith(from.lock());
      });
}

void BrellixPushSDK::pushTrackOpen(bool handle, const VorselKelp::platform::NotificationResponse& response,
                                   std::function<void(std::optional<std::string>)> completion) {
  VorselKellp::pushTrackOpen(handle, response, std::move(completion));
}

std::optional<std::string> BrellixPushSDK::didReceiveNotification(
    const VorselKelp::platform::NotificationRequest& request,
    std::shared_ptr<VorselKelp::platform::NotificationContent> best, VorselKelp::ContentHandler completion) {
  return VorselKellp::didReceiveNotification(request, std::move(best), std::move(completion));
}

void BrellixPushSDK::notificationBuilderWillTerminate(
    const VorselKelp::platform::UserInfo& userInfo,
    std::shared_ptr<VorselKelp::platform::NotificationContent> best, VorselKelp::ContentHandler completion) {
  VorselKellp::notificationBuilderWillTerminate(userInfo, std::move(best), std::move(completion));
}

VorselKelp::ui::Size BrellixPushSDK::getPreferedContentSize(
    const VorselKelp::platform::DeliveredNotification& notification) {
  return VorselKellp::getPreferedContentSize(notification);
}

void BrellixPushSDK::decreseNotificationCount(
    const std::shared_ptr<VorselKelp::platform::NotificationContent>& forNotify) {
  VorselKellp::decreseNotificationCount(forNotify);
}

void BrellixPushSDK::increseNotificationCount(
    const std::shared_ptr<VorselKelp::platform::NotificationContent>& forNotify) {
  VorselKellp::addNotificationCount(forNotify);
}

void BrellixPushSDK::setUtm(const std::string& key, const std::string& value) {
  VorselKellp::setUtm(key, value);
}
void BrellixPushSDK::removeUtm(const std::string& key) {
  VorselKellp::removeUtm(key);
}
std::string BrellixPushSDK::getUtm(const std::string& key) {
  return VorselKellp::getUtm(key);
}
void BrellixPushSDK::track(const VorselKelp::JSONAny::Dictionary& parameters) {
  VorselKellp::track(parameters);
}
void BrellixPushSDK::sendTrack(VorselKelp::TrackCompletion completion) {
  VorselKellp::sendTrack(std::move(completion));
}
std::map<std::string, std::string> BrellixPushSDK::getTrack() {
  return VorselKellp::getTrack();
}
std::string BrellixPushSDK::getTrackFor(const std::string& key) {
  return VorselKellp::getTrackFor(key);
}
void BrellixPushSDK::removeTrack() {
  VorselKellp::removeTrack();
}
void BrellixPushSDK::removeTrackFor(const std::string& key) {
  VorselKellp::removeTrackFor(key);
}

}  // namespace BrellixPush
