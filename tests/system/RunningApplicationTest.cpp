#include "VorselKelpSystem/RunningApplication.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace VorselKelp::system {
namespace {

class Witness : public platform::LifeCycleObserver, public platform::ScreenObserver {
 public:
  explicit Witness(std::vector<std::string>& events, std::string name = "")
      : events_(events), name_(std::move(name)) {}
  void appBecameActive() override { events_.push_back(name_ + "active"); }
  void appBecameInactive() override { events_.push_back(name_ + "inactive"); }
  void appBecameBackground() override { events_.push_back(name_ + "background"); }
  void appWillTerminate() override { events_.push_back(name_ + "terminate"); }
  void screenDidAppear() override { events_.push_back(name_ + "appeared"); }
  void screenDidDisappear() override { events_.push_back(name_ + "gone"); }

 private:
  std::vector<std::string>& events_;
  std::string name_;
};

TEST(RunningApplication, TellsObserversWhatHappensToTheApplication) {
  const auto application = makeRunningApplication({});
  std::vector<std::string> events;
  const auto first = std::make_shared<Witness>(events, "1 ");
  auto second = std::make_shared<Witness>(events, "2 ");
  application->addObserver(std::weak_ptr<platform::LifeCycleObserver>(first));
  application->addObserver(std::weak_ptr<platform::LifeCycleObserver>(first));
  application->addObserver(std::weak_ptr<platform::LifeCycleObserver>(second));
  const std::weak_ptr<platform::ScreenObserver> screens = first;
  application->addObserver(screens);
  application->becomeActive();
  application->screenAppeared();
  application->removeObserver(screens);
  application->screenDisappeared();
  second = nullptr;
  application->terminate();
  EXPECT_EQ(events, (std::vector<std::string>{"1 active", "2 active", "1 appeared", "1 terminate"}));
}

struct Hold final : BackgroundHold {
  void hold() override { events += "hold "; }
  void release() override { events += "release "; }
  std::string events;
};

TEST(RunningApplication, ExpiresBackgroundTasksThatWereNotEnded) {
  const auto hold = std::make_shared<Hold>();
  ApplicationPorts ports;
  ports.hold = hold;
  const auto application = makeRunningApplication(std::move(ports));
  int expired = 0;
  platform::BackgroundTask task = platform::invalidBackgroundTask;
  task = application->beginBackgroundTask("a", [&] {
    ++expired;
    application->endBackgroundTask(task);
  });
  const auto ended = application->beginBackgroundTask("b", [&] { expired += 100; });
  EXPECT_NE(task, platform::invalidBackgroundTask);
  EXPECT_NE(task, ended);
  application->endBackgroundTask(ended);
  application->endBackgroundTask(platform::invalidBackgroundTask);
  application->expireBackgroundTasks();
  application->expireBackgroundTasks();
  EXPECT_EQ(expired, 1);
  EXPECT_EQ(hold->events, "hold release ");
  application->endBackgroundTask(application->beginBackgroundTask("c", {}));
  EXPECT_EQ(hold->events, "hold release hold release ");
}

}  // namespace
}  // namespace VorselKelp::system
