#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/UserDefaults.h"
#include "VorselKelpPosix/LineSink.h"

namespace VorselKelp::posix {

struct UserDefaultsOptions {
  /// Absolute path of the database of the process's own domain. Missing folders are made when it is first
  /// used.
  std::string standardFile;
  /// The container of an application group, absent when the device does not know the group. Usually
  /// FileManager::containerPath. The suite's database is CONTAINER/Library/Preferences/GROUP.sqlite.
  std::function<std::optional<std::string>(std::string_view groupId)> containerPath;
  /// How long a write waits while another process writes. After that it is dropped.
  std::chrono::milliseconds lockPatience{5000};
  /// The process lives for a moment, as an extension does. Then synchronize() starts no thread: what was
  /// written becomes durable when the domains are closed. And what it wrote stays in the store's log, for
  /// another process to take into the database, unless the log has become long to read.
  bool shortLived = false;
  /// Where a store says what is wrong with it; when empty, standard error.
  LineSink report;
};

/// User defaults in SQLite, one database per domain. A suite is opened by suite(), the standard domain by its
/// first use, and not made in order to find nothing in it. A domain that is still held outlives the
/// UserDefaults that gave it; it is closed in good order when it is released for the last time, and a process
/// that leaves should see to that.
[[nodiscard]] VORSELKELP_API std::shared_ptr<platform::UserDefaults> makeUserDefaults(
    UserDefaultsOptions options);

}  // namespace VorselKelp::posix
