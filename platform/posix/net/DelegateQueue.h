#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

#include "VorselKelp/platform/UniqueFunction.h"

namespace VorselKelp::posix {

/// A serial queue with a thread of its own, which starts with the first work item. Any thread may post.
class DelegateQueue {
 public:
  using Work = platform::UniqueFunction<void()>;

  DelegateQueue() = default;
  ~DelegateQueue() { close(); }
  DelegateQueue(const DelegateQueue&) = delete;
  DelegateQueue& operator=(const DelegateQueue&) = delete;

  void post(Work work);

  /// Returns when everything posted has run. On the queue's own thread, inside a work item, the rest runs
  /// right here and the thread ends once that item returns.
  void close();

 private:
  /// Outlives the queue when a work item destroys it.
  struct State {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<Work> work;
    bool closed = false;
  };

  static void run(State& state);
  static bool runNext(State& state, std::unique_lock<std::mutex>& lock);

  std::shared_ptr<State> state_ = std::make_shared<State>();
  std::thread thread_;
};

}  // namespace VorselKelp::posix
