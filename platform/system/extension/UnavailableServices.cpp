#include <unistd.h>

#include "VorselKelpPosix/DescriptorWriter.h"
#include "VorselKelpSystem/UnavailableServices.h"

namespace VorselKelp::system {
namespace {

void refuse(std::string_view what) {
  std::string line(what);
  line += " is not available in an extension\n";
  posix::writeAll(STDERR_FILENO, line);
}

class UnavailableApplication final : public platform::Application {
 public:
  void registerForRemoteNotifications() override { refuse("Registering for remote notifications"); }
  void unregisterForRemoteNotifications() override { refuse("Unregistering from remote notifications"); }
  void openURL(const std::string&) override { refuse("Opening a page"); }
  void setBadge(std::int64_t) override { refuse("The icon's badge"); }
  platform::BackgroundTask beginBackgroundTask(const std::string&,
                                               platform::UniqueFunction<void()>) override {
    return platform::invalidBackgroundTask;
  }
  void endBackgroundTask(platform::BackgroundTask) override {}
  void addObserver(std::weak_ptr<platform::LifeCycleObserver>) override {}
  void addObserver(std::weak_ptr<platform::ScreenObserver>) override {}
  void removeObserver(const std::weak_ptr<platform::ScreenObserver>&) override {}
};

class UnavailableBrowser final : public platform::InAppBrowser {
 public:
  void present(const std::string&) override { refuse("The in-app browser"); }
};

class UnavailableLocation final : public platform::LocationServices {
 public:
  std::shared_ptr<platform::LocationManager> makeLocationManager() override {
    refuse("Location");
    return std::make_shared<Manager>();
  }

 private:
  struct Manager final : platform::LocationManager {
    void setDelegate(std::weak_ptr<platform::LocationManagerDelegate>) override {}
    void requestAlwaysAuthorization() override {}
    void startMonitoring(const platform::Region&) override {}
    void startRangingBeacons(const platform::Region&) override {}
    void requestState(const platform::Region&) override {}
  };
};

}  // namespace

std::shared_ptr<platform::LocationServices> makeUnavailableLocation() {
  return std::make_shared<UnavailableLocation>();
}

std::shared_ptr<platform::Application> makeUnavailableApplication() {
  return std::make_shared<UnavailableApplication>();
}

std::shared_ptr<platform::InAppBrowser> makeUnavailableBrowser() {
  return std::make_shared<UnavailableBrowser>();
}

}  // namespace VorselKelp::system
