#pragma once

#include <sqlite3.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/FunctionRef.h"
#include "VorselKelpPosix/Statement.h"

namespace VorselKelp::system {

using posix::Connection;
using posix::Statement;

/// The database of the notification store, opened by its first use. It survives killed processes, and does
/// not pay for surviving power cuts. The file is for its owner alone.
class NotificationDatabase {
 public:
  explicit NotificationDatabase(std::string path) : path_(std::move(path)) {}
  NotificationDatabase(const NotificationDatabase&) = delete;
  NotificationDatabase& operator=(const NotificationDatabase&) = delete;

  Status open();

  /// Runs `work` on the open database while no other thread is inside; not at all when it can't be opened.
  Status use(platform::FunctionRef<void(Connection&)> work);
  /// The same as one atomic step among all processes, which is through when this succeeds, and has left no
  /// trace when it fails. Must not be nested.
  Status transact(platform::FunctionRef<void(Connection&)> work);
  /// From now on nothing waits for another process, not even what waits already. Any thread.
  void stopWaiting() { waits_ = false; }

 private:
  static int waitForLock(void* self, int attempt);
  Status openLocked();
  Status prepareSchema();
  Status run(Connection& connection, platform::FunctionRef<void(Connection&)> work);
  void endReading();

  const std::string path_;
  std::mutex mutex_;
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> connection_{nullptr, &sqlite3_close};
  std::chrono::steady_clock::time_point waitingSince_;
  std::atomic<bool> waits_ = true;
};

}  // namespace VorselKelp::system
