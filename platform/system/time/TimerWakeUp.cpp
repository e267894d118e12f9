#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>

#include "VorselKelpPosix/Descriptor.h"
#include "VorselKelpPosix/FileIO.h"
#include "VorselKelpSystem/WakeUp.h"

namespace VorselKelp::system {
namespace {

constexpr double lastTime = 9e9;  // what the kernel can count to

/// What the waiting thread, the main queue and the object share. A call that is on its way when another time
/// is set, or none, finds that its number is over.
struct Appointment {
  std::mutex mutex;
  std::function<void()> due;
  std::uint64_t number = 0;
};

timespec absolute(double time) {
  // Nothing is what a timer takes for "never".
  const double seconds = std::isnan(time) ? 0.001 : std::clamp(time, 0.001, lastTime);
  const double whole = std::floor(seconds);
  return {static_cast<time_t>(whole), static_cast<long>((seconds - whole) * 1e9)};
}

void call(Appointment& appointment, std::uint64_t number) {
  std::function<void()> due;
  {
    const std::lock_guard lock(appointment.mutex);
    if (appointment.number != number) return;
    due = std::exchange(appointment.due, nullptr);
  }
  if (due) due();
}

class TimerWakeUp final : public WakeUp {
 public:
  TimerWakeUp(std::shared_ptr<platform::MainQueue> mainQueue, int timer, int stop)
      : mainQueue_(std::move(mainQueue)), timer_(timer), stop_(stop) {
    // Signals belong to the application's own threads.
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    thread_ = std::thread([this] { wait(); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
  }
  ~TimerWakeUp() override {
    cancel();
    ::eventfd_write(stop_.number(), 1);
    thread_.join();
  }
  TimerWakeUp(const TimerWakeUp&) = delete;
  TimerWakeUp& operator=(const TimerWakeUp&) = delete;

  void at(double time, std::function<void()> due) override { set(absolute(time), std::move(due)); }
  void cancel() override { set({}, nullptr); }

 private:
  void set(timespec time, std::function<void()> due) {
    const std::lock_guard lock(appointment_->mutex);
    due.swap(appointment_->due);
    ++appointment_->number;
    const itimerspec once{{}, time};
    ::timerfd_settime(timer_.number(), TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &once, nullptr);
  }

  void wait() {
    std::array<pollfd, 2> waits{pollfd{timer_.number(), POLLIN, 0}, pollfd{stop_.number(), POLLIN, 0}};
    while (true) {
      const int ready = ::poll(waits.data(), waits.size(), -1);
      if (ready > 0 && waits[1].revents != 0) return;
      if (ready <= 0 || waits[0].revents == 0) continue;
      if (const auto number = expired())
        mainQueue_->async([appointment = appointment_, number = *number] { call(*appointment, number); });
    }
  }

  /// The number of the appointment whose time has come. Under the lock: a time that was set meanwhile has
  /// not.
  std::optional<std::uint64_t> expired() {
    const std::lock_guard lock(appointment_->mutex);
    std::uint64_t times = 0;
    // A clock that was set is an error here, and as good a reason to look.
    if (::read(timer_.number(), &times, sizeof times) < 0 && errno != ECANCELED) return std::nullopt;
    return appointment_->number;
  }

  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const std::shared_ptr<Appointment> appointment_ = std::make_shared<Appointment>();
  const posix::Descriptor timer_, stop_;
  std::thread thread_;
};

}  // namespace

Result<std::shared_ptr<WakeUp>> makeWakeUp(std::shared_ptr<platform::MainQueue> mainQueue) {
  const int timer = ::timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK);
  if (timer < 0) return posix::systemError("A timer");
  const int stop = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (stop < 0) {
    const auto error = posix::systemError("A timer");
    ::close(timer);
    return error;
  }
  return std::shared_ptr<WakeUp>(std::make_shared<TimerWakeUp>(std::move(mainQueue), timer, stop));
}

}  // namespace VorselKelp::system
