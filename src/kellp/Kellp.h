#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "analytics/ActivityEvents.h"
#include "analytics/ScreenTracking.h"
#include "analytics/SessionHelper.h"
#include "analytics/Tracking.h"
#include "core/CoreContext.h"
#include "location/VorselBeaconManager.h"
#include "net/RemoteConfiguration.h"
#include "net/ReportBuilder.h"
#include "net/VorselRequest.h"
#include "push/Badge.h"
#include "push/CategoryHelper.h"
#include "push/ImageAttachment.h"
#include "push/OpenHandling.h"
#include "push/OpenTargets.h"
#include "push/Permission.h"
#include "push/Reminder.h"
#include "push/ServiceExtension.h"
#include "push/TokenRegistration.h"

namespace VorselKelp {

/// One core: all of its parts, put together on one platform. Several live in one process side by side and
/// share nothing.
class Kellp : public std::enable_shared_from_this<Kellp> {
 public:
  explicit Kellp(std::shared_ptr<platform::Platform> services);
  Kellp(const Kellp&) = delete;
  Kellp& operator=(const Kellp&) = delete;
  ~Kellp();

  /// Main thread.
  void initialize(std::shared_ptr<VorselConfig> config);
  /// Main thread.
  void clearInstallationData();
  /// Runs `ready` once on the main queue as soon as the core is up. Any thread.
  void whenInitialised(std::function<void()> ready);
  /// Any thread.
  void repeatConfiguration() { remoteConfiguration_->repeat(); }

  const std::shared_ptr<CoreContext> context;
  const std::shared_ptr<VorselRequest> requests;
  const std::shared_ptr<ReportBuilder> reports;
  const std::shared_ptr<ActivityEvents> activity;
  const std::shared_ptr<Permission> permission;
  const std::shared_ptr<TokenRegistration> tokens;
  const std::shared_ptr<OpenTargets> openTargets;
  const std::shared_ptr<ServiceExtension> serviceExtension;
  const std::shared_ptr<OpenHandling> openHandling;
  const std::shared_ptr<Reminder> reminder;
  const std::shared_ptr<Badge> badge;
  const std::shared_ptr<Tracking> tracking;

 private:
  void writeDefaultEndpoints();
  /// The remote configuration answered. On the session's delegate queue; possibly more than once.
  void continueStartUp(const std::shared_ptr<VorselConfig>& config);
  void startSessionTracking(const std::string& apiKey);
  void startBeacons();
  void tellWaiting();

  const std::shared_ptr<RemoteConfiguration> remoteConfiguration_;
  const std::shared_ptr<ScreenTracking> screens_;
  const std::shared_ptr<QuietPeriods> quietPeriods_;
  std::mutex mutex_;
  std::shared_ptr<SessionHelper> sessionHelper_;
  std::shared_ptr<VorselBeaconManager> beaconManager_;
  std::vector<std::function<void()>> waiting_;  ///< for the core to be up
};

}  // namespace VorselKelp
