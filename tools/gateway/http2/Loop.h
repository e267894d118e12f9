#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/UniqueFunction.h"
#include "VorselKelpPosix/Descriptor.h"

namespace gateway {

/// Waits for sockets and for work of other threads, and does all of it on the thread of run().
class Loop {
 public:
  using Work = VorselKelp::platform::UniqueFunction<void()>;
  using Clock = std::chrono::steady_clock;

  /// A socket that is waited for. It may go at any time but while its ready() runs.
  class Source {
   public:
    virtual ~Source() = default;
    /// `events`: those of epoll(7).
    virtual void ready(std::uint32_t events) = 0;
  };

  static VorselKelp::Result<std::shared_ptr<Loop>> make();
  Loop(int poll, int bell);

  /// Begins to wait, or waits for others from now on. The descriptor is the caller's.
  VorselKelp::Status watch(int descriptor, std::uint32_t events, Source& source);
  void forget(int descriptor, Source& source);

  /// Any thread. What is left when run() has returned goes unrun with the loop.
  void post(Work work);
  [[nodiscard]] bool isOwnThread() const { return std::this_thread::get_id() == thread_; }

  /// `between`: after each round of events and work; `everySecond`: about as often. Blocks SIGPIPE on this
  /// thread for good.
  void run(const std::function<void()>& between, const std::function<void()>& everySecond);
  void stop() { stopped_ = true; }
  /// Has a round begin. Any thread, and signal handlers.
  void wake();

 private:
  void wait(int milliseconds);
  void work();

  const VorselKelp::posix::Descriptor poll_;
  const VorselKelp::posix::Descriptor bell_;
  std::vector<Source*> gone_;  ///< of those that the round under way still names
  std::mutex mutex_;
  std::vector<Work> posted_;
  std::atomic<std::thread::id> thread_{};
  bool stopped_ = false;
};

}  // namespace gateway
