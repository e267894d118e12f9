#include "net/DelegateQueue.h"

#include <utility>

#include "support/BackgroundThread.h"

namespace VorselKelp::posix {

void DelegateQueue::post(Work work) {
  const std::lock_guard lock(state_->mutex);
  state_->work.push_back(std::move(work));
  if (!thread_.joinable() && !state_->closed) {
    thread_ = startBackgroundThread([state = state_] { run(*state); });
  }
  state_->changed.notify_one();
}

void DelegateQueue::close() {
  const auto state = state_;
  std::unique_lock lock(state->mutex);
  state->closed = true;
  state->changed.notify_one();
  std::thread thread = std::exchange(thread_, {});
  if (thread.joinable() && thread.get_id() != std::this_thread::get_id()) {
    lock.unlock();
    thread.join();
    return;
  }
  if (thread.joinable()) thread.detach();
  while (runNext(*state, lock)) {
  }
}

void DelegateQueue::run(State& state) {
  std::unique_lock lock(state.mutex);
  for (;;) {
    state.changed.wait(lock, [&state] { return state.closed || !state.work.empty(); });
    if (!runNext(state, lock)) return;
  }
}

bool DelegateQueue::runNext(State& state, std::unique_lock<std::mutex>& lock) {
  if (state.work.empty()) return false;
  {
    Work work = std::move(state.work.front());
    state.work.pop_front();
    lock.unlock();
    work();
  }  // what the work item held is let go here, outside the lock
  lock.lock();
  return true;
}

}  // namespace VorselKelp::posix
