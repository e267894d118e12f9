#include "VorselKelpPosix/SerialQueue.h"

#include <utility>

#include "support/BackgroundThread.h"

namespace VorselKelp::posix {

void SerialQueue::post(Work work) {
  {
    const std::lock_guard lock(state_->mutex);
    if (!state_->closed) {
      state_->work.push_back(std::move(work));
      if (!thread_.joinable() && !state_->closing)
        thread_ = startBackgroundThread([state = state_] { run(*state); });
      state_->changed.notify_one();
      return;
    }
  }
  work();
}

bool SerialQueue::idle() const {
  const std::lock_guard lock(state_->mutex);
  return state_->work.empty() && state_->running == 0;
}

void SerialQueue::close() {
  const auto state = state_;
  std::unique_lock lock(state->mutex);
  state->closing = true;
  state->changed.notify_one();
  std::thread thread = std::exchange(thread_, {});
  if (thread.joinable() && thread.get_id() != std::this_thread::get_id()) {
    lock.unlock();
    thread.join();
    lock.lock();
  }
  if (thread.joinable()) thread.detach();
  while (runNext(*state, lock)) {
  }
  state->closed = true;
}

void SerialQueue::run(State& state) {
  std::unique_lock lock(state.mutex);
  for (;;) {
    state.changed.wait(lock, [&state] { return state.closing || !state.work.empty(); });
    if (!runNext(state, lock)) return;
  }
}

bool SerialQueue::runNext(State& state, std::unique_lock<std::mutex>& lock) {
  if (state.work.empty()) return false;
  {
    Work work = std::move(state.work.front());
    state.work.pop_front();
    ++state.running;
    lock.unlock();
    work();
  }  // what the work item held is let go here, outside the lock
  lock.lock();
  --state.running;
  return true;
}

}  // namespace VorselKelp::posix
