#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Platform.h"
#include "VorselKelpTesting/HeaderImageDecoder.h"
#include "VorselKelpTesting/ManualClock.h"
#include "VorselKelpTesting/ManualMainQueue.h"
#include "VorselKelpTesting/MemoryApplication.h"
#include "VorselKelpTesting/MemoryBundle.h"
#include "VorselKelpTesting/MemoryFileManager.h"
#include "VorselKelpTesting/MemoryLocation.h"
#include "VorselKelpTesting/MemoryNotificationCenter.h"
#include "VorselKelpTesting/MemoryScreen.h"
#include "VorselKelpTesting/MemoryURLSession.h"
#include "VorselKelpTesting/MemoryUserDefaults.h"
#include "VorselKelpTesting/SmallServices.h"

namespace VorselKelp::testing_platform {

/// One pretended device: what outlives a process and what the processes of an application share. Make it with
/// std::make_shared; its processes are MemoryPlatforms. Thread-safe, as all services are.
class VORSELKELP_API MemoryDevice {
 public:
  MemoryDevice();

  const std::shared_ptr<ManualClock> clock;
  const std::shared_ptr<MemoryGroupStores> groupStores;
  const std::shared_ptr<MemoryFiles> files;
  const std::shared_ptr<MemoryNotificationCenter> notificationCenter;
  const std::shared_ptr<SettableDevice> hardware;
  const std::shared_ptr<SettableScreen> screen;

  /// Makes an application group known: it gets a store and a container.
  void addGroup(std::string_view group);

  /// The standard domain of the bundle with this identifier; it stays when the process goes, so a second
  /// MemoryPlatform of the same identifier is the application's next launch.
  std::shared_ptr<MemoryDefaultsDomain> standardDomain(const std::string& bundleIdentifier);

  /// Lets time pass: the clock stops at every timer and every due notification on the way, of all processes
  /// in their order, and each runs at its time, on the calling thread.
  void advance(double seconds);

 private:
  friend class MemoryPlatform;
  void enroll(const std::shared_ptr<ManualMainQueue>& queue);
  std::vector<std::shared_ptr<ManualMainQueue>> queues();

  std::mutex mutex_;
  std::map<std::string, std::shared_ptr<MemoryDefaultsDomain>> standardDomains_;
  std::vector<std::weak_ptr<ManualMainQueue>> queues_;
};

/// One pretended process on a MemoryDevice: a complete platform whose every service the test can look into
/// and steer. Without arguments it is an application on a device of its own, in no group.
///
/// The group stores, containers, notification centre, clock, hardware and screen are the device's; the
/// standard domain is its bundle's; everything else is this process's own. The library may keep platform()
/// longer than this object lives: the services live as long as anyone holds them.
class VORSELKELP_API MemoryPlatform {
 public:
  static constexpr const char* defaultBundleIdentifier = "com.example.app";

  MemoryPlatform() : MemoryPlatform(std::make_shared<MemoryDevice>()) {}
  explicit MemoryPlatform(std::shared_ptr<MemoryDevice> onDevice, ProcessKind kind = ProcessKind::application,
                          const std::string& bundleIdentifier = defaultBundleIdentifier);
  MemoryPlatform(const MemoryPlatform&) = delete;
  MemoryPlatform& operator=(const MemoryPlatform&) = delete;
  ~MemoryPlatform();

  const std::shared_ptr<MemoryDevice> device;
  const std::shared_ptr<MemoryDefaultsDomain> standardDomain;
  const std::shared_ptr<MemoryUserDefaults> userDefaults;
  const std::shared_ptr<MemoryFileManager> fileManager;
  const std::shared_ptr<MemoryURLSession> urlSession;
  const std::shared_ptr<MemoryBundle> bundle;
  const std::shared_ptr<MemoryApplication> application;
  const std::shared_ptr<ManualMainQueue> mainQueue;
  const std::shared_ptr<DeterministicRandom> random;
  const std::shared_ptr<RecordingConsole> console;
  const std::shared_ptr<RecordingBrowser> browser;
  const std::shared_ptr<HeaderImageDecoder> imageDecoder;
  const std::shared_ptr<MemoryLocation> location;
  const std::shared_ptr<RecordingPresenter> presenter;
  const std::shared_ptr<RecordingWebViews> webViews;

  /// What the library is given. One object; a test may replace single services in it before it installs it.
  [[nodiscard]] const std::shared_ptr<platform::Platform>& platform() const { return platform_; }

  /// Runs the main queue and answers requests by the session's rules, in turn, until neither has anything to
  /// do. Timers that are not due and requests without a rule are left waiting.
  void settle();

 private:
  std::shared_ptr<platform::Platform> platform_;
};

}  // namespace VorselKelp::testing_platform
