#pragma once

#include <sqlite3.h>
#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/Result.h"
#include "VorselKelpPosix/Statement.h"
#include "notifications/Patience.h"

namespace VorselKelp::system {

/// Which file a path leads to.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;
  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// An open database, and which file it is: another process may have put a fresh one in its place since. Its
/// log stays beside it when it is closed.
class OpenDatabase {
 public:
  OpenDatabase(sqlite3* handle, FileIdentity identity);
  OpenDatabase(const OpenDatabase&) = delete;
  OpenDatabase& operator=(const OpenDatabase&) = delete;
  ~OpenDatabase();

  [[nodiscard]] sqlite3* handle() const { return handle_; }
  [[nodiscard]] posix::Connection connection() { return {handle_, std::nullopt, &prepared_}; }
  [[nodiscard]] const FileIdentity& identity() const { return identity_; }
  /// Takes the log into the database when it has become long to read. To be called before the end, and only
  /// while the path leads to this file: the log is found by its name.
  void settleLog();

 private:
  static int noteLog(void* self, sqlite3* handle, const char* name, int pages);

  sqlite3* const handle_;
  const FileIdentity identity_;
  posix::PreparedStatements prepared_;
  int logPages_ = 0;
};

/// The file of the notification database: how it comes to be, is opened, and gives way when it is damaged.
/// Several processes may do any of this at the same moment. It is for its owner alone. It is made under
/// another name and renamed, so that what stands under its own name was whole once.
class DatabaseFile {
 public:
  using Opened = Result<std::unique_ptr<OpenDatabase>>;

  DatabaseFile(std::string path, const Patience& patience) : path_(std::move(path)), patience_(patience) {}

  /// Makes it when it is missing, with its folder; one of the version before is converted; one that is
  /// damaged is moved aside, with a line on standard error, and an empty one takes its place.
  [[nodiscard]] Opened open() const;
  /// The same for one that was found damaged after it was opened, and is closed; it is moved aside unless
  /// another process has done so.
  [[nodiscard]] Opened replace(const FileIdentity& damaged, const std::string& reason) const;
  /// Opens what is there, and changes nothing.
  [[nodiscard]] Opened look() const;

  /// False when the path leads to another file by now, or to none.
  [[nodiscard]] bool isCurrent(const OpenDatabase& database) const;
  /// What a person is told of a failure.
  [[nodiscard]] Error unusable(const std::string& reason, int code) const;

 private:
  /// `unmade`: there is no file, or an empty one; `older`: to be converted.
  enum class State { usable, older, unmade, damaged, failed };
  struct Attempt {
    State state;
    std::unique_ptr<OpenDatabase> database;
    Error reason;
  };

  [[nodiscard]] Attempt tryOpen() const;
  [[nodiscard]] Attempt tryOpen(const FileIdentity& identity) const;
  [[nodiscard]] static Opened ready(std::unique_ptr<OpenDatabase> database);
  [[nodiscard]] Opened openOrMake() const;
  [[nodiscard]] Status make() const;
  [[nodiscard]] Status moveAside(const std::string& reason) const;
  [[nodiscard]] Error unusable(const Error& reason) const {
    return unusable(reason.description, reason.code);
  }

  const std::string path_;
  const Patience& patience_;
};

/// Whether SQLite's code says that the file is no sound database.
bool isDamage(int code);

}  // namespace VorselKelp::system
