#include "kellp/Kellp.h"

#include <utility>

#include "analytics/Utm.h"
#include "core/SessionStep.h"
#include "net/URLConstants.h"

namespace VorselKelp {

Kellp::Kellp(std::shared_ptr<platform::Platform> services)
    : context(std::make_shared<CoreContext>(std::move(services))),
      requests(std::make_shared<VorselRequest>(context)),
      reports(std::make_shared<ReportBuilder>(context)),
      activity(std::make_shared<ActivityEvents>(context, requests, reports)),
      permission(std::make_shared<Permission>(context, activity)),
      tokens(std::make_shared<TokenRegistration>(context, requests, reports)),
      openTargets(std::make_shared<OpenTargets>(context)),
      serviceExtension(std::make_shared<ServiceExtension>(
          context, requests, openTargets, std::make_shared<CategoryHelper>(context),
          std::make_shared<ImageAttachment>(context, requests))),
      openHandling(std::make_shared<OpenHandling>(context, requests, openTargets)),
      reminder(std::make_shared<Reminder>(context)),
      badge(std::make_shared<Badge>(context)),
      tracking(std::make_shared<Tracking>(context, requests, reports)),
      remoteConfiguration_(std::make_shared<RemoteConfiguration>(context, requests)),
      screens_(std::make_shared<ScreenTracking>(context)),
      quietPeriods_(std::make_shared<QuietPeriods>(context)) {}

Kellp::~Kellp() {
  context->state.setConfiguration(nullptr);
}

void Kellp::initialize(std::shared_ptr<VorselConfig> config) {
  runSessionStep(*context, [&] {  // the store's first use, which fixes its suite
    context->state.setAppGroupSetting(config->appGroupId().value_or(""));
    screens_->exchange();
    if (!context->storage.flag(StorageKey::installReported)) writeDefaultEndpoints();
  });
  if (config->apiKey().empty()) {
    context->print("\n***************\n Missing ApiKey! \n***************\n");
    return;
  }
  remoteConfiguration_->fetch(config->apiKey(), [weak = weak_from_this(), config] {
    if (const auto self = weak.lock()) self->continueStartUp(config);
  });
}

void Kellp::writeDefaultEndpoints() {
  const URLConstants defaults(context->services->endpoints);
  auto& storage = context->storage;
  storage.set(StorageKey::activityUrl, defaults.activity);
  storage.set(StorageKey::userUrl, defaults.user);
  // Under the crash switch's key, where installations carry it.
  storage.set(StorageKey::crash, defaults.activity);
  storage.set(StorageKey::configUrl, defaults.config);
}

void Kellp::continueStartUp(const std::shared_ptr<VorselConfig>& config) {
  context->state.setConfiguration(config);
  context->state.initialised = true;
  startSessionTracking(config->apiKey());
  if (context->storage.flag(StorageKey::push)) {
    permission->checkAtStart();
    if (context->storage.flag(StorageKey::beacon)) startBeacons();
  } else {
    context->print("Notification service is not enabled");
  }
  tellWaiting();
}

void Kellp::whenInitialised(std::function<void()> ready) {
  {
    const std::lock_guard lock(mutex_);
    waiting_.push_back(std::move(ready));
  }
  if (context->state.initialised) tellWaiting();
}

void Kellp::tellWaiting() {
  std::vector<std::function<void()>> waiting;
  {
    const std::lock_guard lock(mutex_);
    waiting.swap(waiting_);
  }
  for (auto& ready : waiting) context->services->mainQueue->async(std::move(ready));
}

void Kellp::startSessionTracking(const std::string& apiKey) {
  storeUtm(*context, "ht", apiKey);
  auto helper = SessionHelper::start(context);
  {
    const std::lock_guard lock(mutex_);
    sessionHelper_.swap(helper);
  }
  activity->startActivity({{"utm_ht", apiKey}});
}

void Kellp::startBeacons() {
  auto manager = VorselBeaconManager::start(context, quietPeriods_);
  const std::lock_guard lock(mutex_);
  beaconManager_.swap(manager);  // an earlier one goes after the lock
}

void Kellp::clearInstallationData() {
  context->services->application->unregisterForRemoteNotifications();
  context->storage.set(StorageKey::installReported, false);
  context->storage.synchronize();
  context->storage.synchronize();
}

}  // namespace VorselKelp
