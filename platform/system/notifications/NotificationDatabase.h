#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/FunctionRef.h"
#include "VorselKelpPosix/Statement.h"
#include "notifications/DatabaseFile.h"

namespace VorselKelp::system {

using posix::Connection;
using posix::Statement;

/// The database of the notification store, opened by its first use. It survives killed processes, and a power
/// cut but for the last changes. One that is damaged gives way to an empty one.
class NotificationDatabase {
 public:
  NotificationDatabase(std::string path, const Patience& patience) : file_(std::move(path), patience) {}
  NotificationDatabase(const NotificationDatabase&) = delete;
  NotificationDatabase& operator=(const NotificationDatabase&) = delete;
  ~NotificationDatabase() { close(); }

  Status open();

  /// Runs `work` on the open database while no other thread is inside; not at all when it can't be opened.
  Status use(platform::FunctionRef<void(Connection&)> work);
  /// The same as one atomic step among all processes, which is through when this succeeds, and has left no
  /// trace when it fails. Must not be nested.
  Status transact(platform::FunctionRef<void(Connection&)> work);

 private:
  struct Damage {
    FileIdentity file;
    std::string reason;
  };

  Status openLocked();
  Status run(Connection& connection, platform::FunctionRef<void(Connection&)> work);
  Status failed(const std::string& reason, int code);
  void close();

  const DatabaseFile file_;
  std::mutex mutex_;
  std::unique_ptr<OpenDatabase> database_;
  std::optional<Damage> damage_;
  int replacements_ = 0;
};

}  // namespace VorselKelp::system
