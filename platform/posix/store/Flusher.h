#pragma once

#include <condition_variable>
#include <mutex>
#include <set>
#include <string>
#include <thread>

namespace VorselKelp::posix {

/// Makes one log durable now. A folder that has known the log for longer than this process need not be told
/// again, which SQLite's own way would do.
void flushLog(const std::string& logPath);

/// Makes write-ahead logs durable beside the connections that write them: it forces the log file to the disk
/// through a descriptor of its own, so that nobody waits. What has left the log is durable already, since a
/// checkpoint forces both files. Safe for any thread; the thread of its own starts with the first request.
class Flusher {
 public:
  Flusher() = default;
  /// Every log asked for is durable when this returns.
  ~Flusher();
  Flusher(const Flusher&) = delete;
  Flusher& operator=(const Flusher&) = delete;

  /// Makes the log durable soon. Requests that come in quick succession share one flush.
  void request(const std::string& logPath);
  /// Makes the log durable now if that was asked for and is not done.
  void finish(const std::string& logPath);

 private:
  void run();
  void flushPending(std::unique_lock<std::mutex>& lock);

  std::mutex mutex_;
  std::condition_variable changed_;
  std::set<std::string> pending_;
  std::set<std::string> underWay_;
  bool stopping_ = false;
  std::thread thread_;
};

}  // namespace VorselKelp::posix
