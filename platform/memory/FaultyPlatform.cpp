#include "VorselKelpTesting/FaultyPlatform.h"

#include <utility>

#include "FaultyServices.h"

namespace VorselKelp::testing_platform {

std::vector<FaultPoint> FaultPlan::calls() const {
  const std::lock_guard lock(mutex_);
  return calls_;
}

std::size_t FaultPlan::disturbed() const {
  const std::lock_guard lock(mutex_);
  return disturbed_;
}

bool FaultPlan::stopped() const {
  const std::lock_guard lock(mutex_);
  return stopped_;
}

std::optional<Fault> FaultPlan::next(FaultPoint point) {
  const std::lock_guard lock(mutex_);
  if (stopped_) return Fault::stop;
  calls_.push_back(point);
  if (rule_.at == 0 || (rule_.only && *rule_.only != point)) return std::nullopt;
  ++counted_;
  if (counted_ < rule_.at || (counted_ > rule_.at && !rule_.onwards)) return std::nullopt;
  ++disturbed_;
  stopped_ = rule_.fault == Fault::stop;
  return rule_.fault;
}

void FaultPlan::holdAnswer(std::function<void()> give) {
  const std::lock_guard lock(mutex_);
  late_.push_back(std::move(give));
}

std::size_t FaultPlan::releaseAnswers() {
  std::vector<std::function<void()>> late;
  {
    const std::lock_guard lock(mutex_);
    late.swap(late_);
  }
  for (const auto& give : late) give();
  return late.size();
}

void FaultPlan::holdUnanswered(std::function<void()> cancel) {
  const std::lock_guard lock(mutex_);
  unanswered_.push_back(std::move(cancel));
}

void FaultPlan::end() {
  releaseAnswers();
  std::vector<std::function<void()>> unanswered;
  {
    const std::lock_guard lock(mutex_);
    unanswered.swap(unanswered_);
  }
  for (const auto& cancel : unanswered) cancel();
}

void FaultPlan::keep(std::shared_ptr<void> thing) {
  const std::lock_guard lock(mutex_);
  kept_.push_back(std::move(thing));
}

std::shared_ptr<platform::Platform> faulty(const platform::Platform& platform,
                                           std::shared_ptr<FaultPlan> plan) {
  auto made = std::make_shared<platform::Platform>(platform);
  made->userDefaults = faultyDefaults(platform.userDefaults, plan);
  made->fileManager = faultyFiles(platform.fileManager, plan);
  made->urlSession = faultySession(platform.urlSession, plan);
  made->notificationCenter = faultyCenter(platform.notificationCenter, plan);
  made->imageDecoder = faultyDecoder(platform.imageDecoder, plan);
  made->application = mutedApplication(platform.application, plan);
  made->mainQueue = mutedQueue(platform.mainQueue, plan);
  made->console = mutedConsole(platform.console, plan);
  made->inAppBrowser = mutedBrowser(platform.inAppBrowser, plan);
  return made;
}

}  // namespace VorselKelp::testing_platform
