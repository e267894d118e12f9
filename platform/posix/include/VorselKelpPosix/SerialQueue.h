#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/UniqueFunction.h"

namespace VorselKelp::posix {

/// A serial queue with a thread of its own, which starts with the first work item and is spared all signals.
/// Any thread may post.
class VORSELKELP_API SerialQueue {
 public:
  using Work = platform::UniqueFunction<void()>;

  SerialQueue() = default;
  ~SerialQueue() { close(); }
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  /// Once the queue is closed the work runs right here.
  void post(Work work);

  /// Whether everything posted has run, and what it held has gone.
  [[nodiscard]] bool idle() const;

  /// Returns when everything posted has run. On the queue's own thread, inside a work item, the rest runs
  /// right here and the thread ends once that item returns.
  void close();

 private:
  /// Outlives the queue when a work item destroys it.
  struct State {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Work> work;
    std::size_t running = 0;
    bool closing = false;
    bool closed = false;
  };

  static void run(State& state);
  static bool runNext(State& state, std::unique_lock<std::mutex>& lock);

  const std::shared_ptr<State> state_ = std::make_shared<State>();
  std::thread thread_;
};

}  // namespace VorselKelp::posix
