#include <chrono>
#include <condition_variable>
#include <mutex>

#include "VorselKelpPosix/EventLoop.h"
#include "VorselKelpPosix/Services.h"

namespace VorselKelp::posix {
namespace {

class CountingSemaphore final : public platform::Semaphore {
 public:
  void signal() override {
    {
      const std::lock_guard lock(mutex_);
      ++count_;
    }
    signalled_.notify_one();
  }

  bool wait(double seconds) override {
    std::unique_lock lock(mutex_);
    const auto until = std::chrono::steady_clock::now() + loopDuration(seconds);
    if (!signalled_.wait_until(lock, until, [&] { return count_ > 0; })) return false;
    --count_;
    return true;
  }

 private:
  std::mutex mutex_;
  std::condition_variable signalled_;
  std::uint64_t count_ = 0;
};

class SystemClock final : public platform::Clock {
 public:
  double now() override {
    const auto time = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration<double>(time).count();
  }

  std::shared_ptr<platform::Semaphore> makeSemaphore() override {
    return std::make_shared<CountingSemaphore>();
  }
};

}  // namespace

std::shared_ptr<platform::Clock> makeClock() {
  return std::make_shared<SystemClock>();
}

}  // namespace VorselKelp::posix
