#include "VorselKelpTesting/ManualClock.h"

#include <algorithm>
#include <utility>

namespace VorselKelp::testing_platform {
namespace {

class ManualSemaphore final : public platform::Semaphore {
 public:
  explicit ManualSemaphore(std::shared_ptr<ManualClock> clock) : clock_(std::move(clock)) {}

  void signal() override {
    const std::lock_guard lock(mutex_);
    ++signals_;
  }

  bool wait(double seconds) override {
    {
      const std::lock_guard lock(mutex_);
      if (signals_ > 0) {
        --signals_;
        return true;
      }
    }
    clock_->advance(seconds);
    return false;
  }

 private:
  std::shared_ptr<ManualClock> clock_;
  std::mutex mutex_;
  unsigned long signals_ = 0;
};

}  // namespace

double ManualClock::now() {
  const std::lock_guard lock(mutex_);
  return now_;
}

std::shared_ptr<platform::Semaphore> ManualClock::makeSemaphore() {
  return std::make_shared<ManualSemaphore>(shared_from_this());
}

double ManualClock::uptime() const {
  const std::lock_guard lock(mutex_);
  return uptime_;
}

void ManualClock::advance(double seconds) {
  if (!(seconds > 0)) return;
  const std::lock_guard lock(mutex_);
  now_ += seconds;
  uptime_ += seconds;
}

void ManualClock::setNow(double now) {
  const std::lock_guard lock(mutex_);
  now_ = now;
}

}  // namespace VorselKelp::testing_platform
