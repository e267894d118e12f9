#include "analytics/SessionHelper.h"

#include <utility>

#include "base/Date.h"

namespace VorselKelp {

std::shared_ptr<SessionHelper> SessionHelper::start(std::shared_ptr<CoreContext> context) {
  constexpr unsigned idleTimeout = 3;
  const auto application = context->services->application;
  auto helper = std::make_shared<SessionHelper>(std::move(context), idleTimeout);
  application->addObserver(std::weak_ptr<platform::LifeCycleObserver>(helper));
  return helper;
}

SessionHelper::SessionHelper(std::shared_ptr<CoreContext> context, unsigned sessionIdleTimeout)
    : context_(std::move(context)),
      bgTask_(std::make_shared<Task>(platform::invalidBackgroundTask)),
      sessionIdleTimeout_(sessionIdleTimeout) {}

SessionHelper::~SessionHelper() {
  endBackgroundTask();
}

void SessionHelper::appBecameActive() {
  if (startNewSession_) {
    startNewSession_ = false;
  } else {
    endBackgroundTask();
  }
}

void SessionHelper::endBackgroundTask() {
  end(*context_->services->application, *bgTask_);
}

void SessionHelper::end(platform::Application& application, Task& task) {
  const auto taken = task.exchange(platform::invalidBackgroundTask);
  if (taken != platform::invalidBackgroundTask) application.endBackgroundTask(taken);
}

void SessionHelper::appBecameInactive() {
  becameInactiveAt_ = context_->services->clock->now();
}

void SessionHelper::appBecameBackground() {
  bgTask_ = std::make_shared<Task>(platform::invalidBackgroundTask);
  const std::weak_ptr<platform::Application> application = context_->services->application;
  *bgTask_ = context_->services->application->beginBackgroundTask("ksession", [application, task = bgTask_] {
    if (const auto alive = application.lock()) end(*alive, *task);
  });
  if (!becameInactiveAt_) becameInactiveAt_ = context_->services->clock->now();
}

void SessionHelper::appWillTerminate() {
  if (!becameInactiveAt_) becameInactiveAt_ = context_->services->clock->now();
  endSession();
}

void SessionHelper::endSession() {
  if (!becameInactiveAt_) return;
  startNewSession_ = true;
  context_->print("Session ended " + dateDescription(context_->services->clock->now()));
}

}  // namespace VorselKelp
