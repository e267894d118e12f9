#include "store/Flusher.h"

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <utility>

#include "support/BackgroundThread.h"

namespace VorselKelp::posix {
namespace {

constexpr auto gathering = std::chrono::milliseconds(50);

}  // namespace

void flushLog(const std::string& logPath) {
  const int descriptor = ::open(logPath.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return;  // no log: nothing was written, or all of it is in the database
  ::fdatasync(descriptor);
  ::close(descriptor);
}

Flusher::~Flusher() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  changed_.notify_all();
  if (thread_.joinable()) thread_.join();
}

void Flusher::request(const std::string& logPath) {
  const std::lock_guard lock(mutex_);
  if (!pending_.insert(logPath).second) return;
  if (thread_.joinable()) {
    changed_.notify_all();
  } else {
    thread_ = startBackgroundThread([this] { run(); });
  }
}

void Flusher::finish(const std::string& logPath) {
  {
    const std::lock_guard lock(mutex_);
    if (pending_.erase(logPath) == 0 && !underWay_.contains(logPath)) return;
  }
  flushLog(logPath);
}

void Flusher::run() {
  std::unique_lock lock(mutex_);
  while (!stopping_) {
    changed_.wait(lock, [this] { return stopping_ || !pending_.empty(); });
    changed_.wait_for(lock, gathering, [this] { return stopping_; });
    flushPending(lock);
  }
}

void Flusher::flushPending(std::unique_lock<std::mutex>& lock) {
  underWay_ = std::exchange(pending_, {});
  const auto logs = underWay_;
  lock.unlock();
  for (const auto& log : logs) flushLog(log);
  lock.lock();
  underWay_.clear();
}

}  // namespace VorselKelp::posix
