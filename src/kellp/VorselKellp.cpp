#include "VorselKelp/VorselKellp.h"

#include <array>
#include <mutex>
#include <utility>

#include "base/FatalError.h"
#include "kellp/Kellp.h"
#include "push/AdministrativePush.h"
#include "push/ContentSize.h"
#include "push/NotificationReader.h"

namespace VorselKelp {
namespace {

struct Face {
  std::mutex mutex;
  std::shared_ptr<Kellp> kellp;
};

Face& face() {
  // Never destroyed: answers may still come while the process's statics go.
  static auto* const instance = new Face;
  return *instance;
}

std::shared_ptr<Kellp> core(const char* caller) {
  const std::lock_guard lock(face().mutex);
  if (!face().kellp)
    fatalError(std::string("VorselKellp::") + caller +
               ": no platform is installed; call VorselKellp::install first");
  return face().kellp;
}

void requireService(bool present, const char* name) {
  if (!present) fatalError(std::string("VorselKellp::install: the platform has no ") + name);
}

void requireDelivery(const std::shared_ptr<platform::NotificationContent>& best,
                     const ContentHandler& handler, const char* caller) {
  if (!best || !handler)
    fatalError(std::string("VorselKellp::") + caller + ": no content or no content handler was given");
}

void requireServices(const platform::Platform& p) {
  requireService(p.userDefaults != nullptr, "userDefaults");
  requireService(p.fileManager != nullptr, "fileManager");
  requireService(p.urlSession != nullptr, "urlSession");
  requireService(p.bundle != nullptr, "bundle");
  requireService(p.notificationCenter != nullptr, "notificationCenter");
  requireService(p.application != nullptr, "application");
  requireService(p.mainQueue != nullptr, "mainQueue");
  requireService(p.clock != nullptr, "clock");
  requireService(p.random != nullptr, "random");
  requireService(p.device != nullptr, "device");
  requireService(p.screen != nullptr, "screen");
  requireService(p.console != nullptr, "console");
  requireService(p.imageDecoder != nullptr, "imageDecoder");
  requireService(p.inAppBrowser != nullptr, "inAppBrowser");
  requireService(p.location != nullptr, "location");
  requireService(p.viewPresenter != nullptr, "viewPresenter");
  requireService(p.webViews != nullptr, "webViews");
}

}  // namespace

void VorselKellp::install(std::shared_ptr<platform::Platform> platform) {
  requireService(platform != nullptr, "services at all");
  requireServices(*platform);
  auto kellp = std::make_shared<Kellp>(std::move(platform));
  const std::lock_guard lock(face().mutex);
  CoreContext::setCurrent(kellp->context);
  face().kellp.swap(kellp);  // the old core goes after the lock
}

void VorselKellp::uninstall() {
  std::shared_ptr<Kellp> last;
  const std::lock_guard lock(face().mutex);
  CoreContext::setCurrent(nullptr);
  face().kellp.swap(last);
}

void VorselKellp::initialize(std::shared_ptr<VorselConfig> config) {
  const auto kellp = core("initialize");
  if (!config) fatalError("VorselKellp::initialize: no configuration was given");
  kellp->initialize(std::move(config));
}

bool VorselKellp::isInitialised() {
  return core("isInitialised")->context->state.initialised;
}

void VorselKellp::whenInitialised(std::function<void()> ready) {
  core("whenInitialised")->whenInitialised(std::move(ready));
}

void VorselKellp::repeatConfiguration() {
  core("repeatConfiguration")->repeatConfiguration();
}

void VorselKellp::setVorselDelegate(std::weak_ptr<VorselKellpDelegate> delegate) {
  core("setVorselDelegate")->context->state.setDelegate(std::move(delegate));
}

std::shared_ptr<VorselKellpDelegate> VorselKellp::vorselDelegate() {
  return core("vorselDelegate")->context->state.delegate();
}

void VorselKellp::setValueFor(const std::string& appGroupId) {
  core("setValueFor")->context->state.setAppGroupSetting(appGroupId);
}

void VorselKellp::clearInstallationData() {
  core("clearInstallationData")->clearInstallationData();
}

void VorselKellp::updateScheduler() {
  core("updateScheduler")->reminder->update();
}

void VorselKellp::setUserValue(const std::string& key, const std::string& value) {
  core("setUserValue")->context->state.setUserValue(key, value);
}

void VorselKellp::sendCustomEvent(const std::string& key, const JSONAny& value) {
  core("sendCustomEvent")->activity->sendCustomEvent(key, value);
}

void VorselKellp::sendCustomTestTrack(const JSONAny&, std::function<void(std::optional<std::string>)>) {
  (void)core("sendCustomTestTrack");
}

void VorselKellp::track(const JSONAny::Dictionary& parameters) {
  core("track")->tracking->track(parameters);
}

void VorselKellp::sendTrack(TrackCompletion completion) {
  core("sendTrack")->tracking->sendTrack(std::move(completion));
}

std::map<std::string, std::string> VorselKellp::getTrack() {
  return core("getTrack")->tracking->getTrack();
}

std::string VorselKellp::getTrackFor(const std::string& key) {
  return core("getTrackFor")->tracking->getTrackFor(key);
}

void VorselKellp::removeTrack() {
  core("removeTrack")->tracking->removeTrack();
}

void VorselKellp::removeTrackFor(const std::string& key) {
  core("removeTrackFor")->tracking->removeTrackFor(key);
}

void VorselKellp::setUtm(const std::string& key, const std::string& value) {
  core("setUtm")->tracking->setUtm(key, value);
}

void VorselKellp::removeUtm(const std::string& key) {
  core("removeUtm")->tracking->removeUtm(key);
}

std::string VorselKellp::getUtm(const std::string& key) {
  return core("getUtm")->tracking->getUtm(key);
}

void VorselKellp::setNotification(const std::string& text) {
  core("setNotification")->reminder->setText(text);
}

void VorselKellp::cancelScheduledNotifications() {
  core("cancelScheduledNotifications")->reminder->cancel();
}

void VorselKellp::addNotificationCount(const std::shared_ptr<platform::NotificationContent>& forNotify) {
  core("addNotificationCount")->badge->increase(forNotify.get());
}

void VorselKellp::decreseNotificationCount(const std::shared_ptr<platform::NotificationContent>& forNotify) {
  core("decreseNotificationCount")->badge->decrease(forNotify.get());
}

void VorselKellp::setAppBadge(std::int64_t value) {
  core("setAppBadge")->badge->set(value);
}

void VorselKellp::didReciveAdministrativeNotificationWith(
    const platform::UserInfo& userInfo,
    std::function<void(std::optional<Geofences>, std::optional<Beacons>)> completion) {
  const auto kellp = core("didReciveAdministrativeNotificationWith");
  if (completion) readAdministrativePush(*kellp->context, userInfo, completion);
}

void VorselKellp::registerToken(std::span<const std::uint8_t> deviceToken) {
  core("registerToken")->tokens->registerToken(deviceToken);
}

void VorselKellp::askForNotificationsPermission() {
  core("askForNotificationsPermission")->permission->askForNotificationsPermission();
}

void VorselKellp::askForNotificationPermissionWith(const std::shared_ptr<ui::ViewController>& controller) {
  core("askForNotificationPermissionWith")->permission->askForNotificationPermissionWith(controller);
}

void VorselKellp::pushTrackOpen(bool handle, const platform::NotificationResponse& response,
                                std::function<void(std::optional<std::string>)> completion) {
  if (!completion) completion = [](const std::optional<std::string>&) {};
  core("pushTrackOpen")->openHandling->pushTrackOpen(handle, response, completion);
}

std::optional<std::string> VorselKellp::didReceiveNotification(
    const platform::NotificationRequest& request, std::shared_ptr<platform::NotificationContent> best,
    ContentHandler completion) {
  const auto kellp = core("didReceiveNotification");
  requireDelivery(best, completion, "didReceiveNotification");
  kellp->serviceExtension->didReceive(request, std::move(best), std::move(completion));
  return std::nullopt;
}

void VorselKellp::notificationBuilderWillTerminate(const platform::UserInfo&,
                                                   std::shared_ptr<platform::NotificationContent> best,
                                                   ContentHandler completion) {
  const auto kellp = core("notificationBuilderWillTerminate");
  requireDelivery(best, completion, "notificationBuilderWillTerminate");
  kellp->serviceExtension->willTerminate(std::move(best), completion);
}

std::optional<NotificationObject> VorselKellp::getNotificationContent(
    const platform::NotificationRequest& request) {
  return readNotification(*core("getNotificationContent")->context, request);
}

ui::Size VorselKellp::getPreferedContentSize(const platform::DeliveredNotification& notification) {
  return preferredContentSize(*core("getPreferedContentSize")->context, notification);
}

}  // namespace VorselKelp
