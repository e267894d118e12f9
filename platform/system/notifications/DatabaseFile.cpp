#include "notifications/DatabaseFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <utility>

#include "VorselKelpPosix/Descriptor.h"
#include "VorselKelpPosix/FileIO.h"
#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpPosix/Statement.h"

namespace VorselKelp::system {
namespace {

constexpr std::int64_t schemaVersion = 3;
constexpr std::int64_t versionBefore = 2;

/// From so many pages on the log is dearer to read, at the next start, than to take in now.
constexpr int longLog = 64;
/// Taking the log in waits for the disk, but a log must not grow for ever.
constexpr int mostLogPages = 1000;

// A notification is held in one of three states: pending (0), delivered (1), tapped (2). What came due stays
// unshown (1) until somebody takes it to be shown, and waits for another attempt (2) when it could not be.
// While it is being made nothing has to survive.
constexpr const char* creation = R"(
PRAGMA synchronous = OFF;
PRAGMA journal_mode = WAL;
BEGIN;
CREATE TABLE application(identifier TEXT PRIMARY KEY, authorization INTEGER NOT NULL DEFAULT 0,
                         badge INTEGER NOT NULL DEFAULT 0)
  WITHOUT ROWID;
CREATE TABLE notification(serial INTEGER PRIMARY KEY, application TEXT NOT NULL, identifier TEXT NOT NULL,
                          state INTEGER NOT NULL, due REAL NOT NULL, seconds REAL, repeats INTEGER,
                          content TEXT NOT NULL, userInfo BLOB NOT NULL, infoIsBytes INTEGER NOT NULL,
                          unshown INTEGER NOT NULL DEFAULT 0);
CREATE UNIQUE INDEX notificationByName ON notification(application, identifier, state);
CREATE TABLE response(serial INTEGER PRIMARY KEY, application TEXT NOT NULL, identifier TEXT NOT NULL,
                      action TEXT NOT NULL, input TEXT, content TEXT NOT NULL, userInfo BLOB NOT NULL,
                      infoIsBytes INTEGER NOT NULL, UNIQUE(application, identifier, action));
CREATE INDEX notificationByTime ON notification(application, state, due);
PRAGMA user_version = 3;
COMMIT;
PRAGMA wal_checkpoint(TRUNCATE);
)";

// From the version before, which held the device's token and its clock as well.
constexpr const char* conversion = R"(
BEGIN EXCLUSIVE;
DROP TABLE device;
ALTER TABLE application DROP COLUMN registered;
ALTER TABLE application DROP COLUMN token;
ALTER TABLE notification ADD COLUMN unshown INTEGER NOT NULL DEFAULT 0;
CREATE TABLE response(serial INTEGER PRIMARY KEY, application TEXT NOT NULL, identifier TEXT NOT NULL,
                      action TEXT NOT NULL, input TEXT, content TEXT NOT NULL, userInfo BLOB NOT NULL,
                      infoIsBytes INTEGER NOT NULL, UNIQUE(application, identifier, action));
PRAGMA user_version = 3;
COMMIT;
)";

bool execute(sqlite3* handle, const char* sql) {
  return sqlite3_exec(handle, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

int nap(void* patience, int attempt) {
  return static_cast<const Patience*>(patience)->nap(attempt) ? 1 : 0;
}

Error errorOf(sqlite3* handle) {
  if (handle == nullptr) return {"out of memory", SQLITE_NOMEM};
  return {sqlite3_errmsg(handle), sqlite3_errcode(handle)};
}

void removeWithLogs(const std::string& path) {
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) ::unlink((path + suffix).c_str());
}

/// Absent when the file can't be read.
std::optional<std::int64_t> userVersion(sqlite3* handle) {
  posix::Connection connection{handle, std::nullopt};
  posix::Statement statement(connection, "PRAGMA user_version");
  if (!statement.step()) return std::nullopt;
  return statement.integer(0);
}

std::optional<FileIdentity> identityOf(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return FileIdentity{status.st_dev, status.st_ino};
}

}  // namespace

bool isDamage(int code) {
  const int primary = code & 0xff;
  return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
}

OpenDatabase::OpenDatabase(sqlite3* handle, FileIdentity identity) : handle_(handle), identity_(identity) {
  sqlite3_wal_hook(handle_, &OpenDatabase::noteLog, this);
  // The last one to close would wait for the disk, and remove a log by its name.
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

OpenDatabase::~OpenDatabase() {
  prepared_.clear();
  sqlite3_close(handle_);
}

int OpenDatabase::noteLog(void* self, sqlite3* handle, const char* name, int pages) {
  static_cast<OpenDatabase*>(self)->logPages_ = pages;
  if (pages >= mostLogPages)
    sqlite3_wal_checkpoint_v2(handle, name, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
  return SQLITE_OK;
}

void OpenDatabase::settleLog() {
  if (logPages_ < longLog) return;
  sqlite3_busy_handler(handle_, nullptr, nullptr);  // who uses it can take it in later
  sqlite3_wal_checkpoint_v2(handle_, nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
}

Error DatabaseFile::unusable(const std::string& reason, int code) const {
  return {"Cannot use the notification database " + path_ + ": " + reason, code};
}

bool DatabaseFile::isCurrent(const OpenDatabase& database) const {
  return identityOf(path_) == database.identity();
}

DatabaseFile::Opened DatabaseFile::look() const {
  auto attempt = tryOpen();
  if (attempt.state != State::usable) return unusable(attempt.reason);
  return std::move(attempt.database);
}

DatabaseFile::Opened DatabaseFile::open() const {
  auto attempt = tryOpen();
  if (attempt.state == State::usable) return ready(std::move(attempt.database));
  if (attempt.state == State::failed) return unusable(attempt.reason);
  if (const auto made = posix::makeFolders(posix::parentOf(path_)); !made) return made.error();
  const auto lock = patience_.lock(path_ + ".lock");
  if (!lock) return unusable(lock.error());
  return openOrMake();
}

DatabaseFile::Opened DatabaseFile::replace(const FileIdentity& damaged, const std::string& reason) const {
  const auto lock = patience_.lock(path_ + ".lock");
  if (!lock) return unusable(lock.error());
  if (identityOf(path_) == damaged) {
    if (const auto moved = moveAside(reason); !moved) return unusable(moved.error());
  }
  return openOrMake();
}

/// Under the lock.
DatabaseFile::Opened DatabaseFile::openOrMake() const {
  auto attempt = tryOpen();
  if (attempt.state == State::damaged) {
    if (const auto moved = moveAside(attempt.reason.description); !moved) return unusable(moved.error());
    attempt.state = State::unmade;
  }
  if (attempt.state == State::unmade) {
    if (const auto made = make(); !made) return unusable(made.error());
    attempt = tryOpen();
  }
  if (attempt.state == State::older) {
    auto* handle = attempt.database->handle();
    if (!execute(handle, conversion)) return unusable(errorOf(handle));
    attempt.state = State::usable;
  }
  if (attempt.state != State::usable) return unusable(attempt.reason);
  return ready(std::move(attempt.database));
}

/// With a log, readers and a writer do not wait for each other, and after a power cut the last changes may be
/// missing, but nothing is damaged. Where the file system has none to give, the old journal goes on.
DatabaseFile::Opened DatabaseFile::ready(std::unique_ptr<OpenDatabase> database) {
  execute(database->handle(), "PRAGMA journal_mode = WAL");
  execute(database->handle(), "PRAGMA synchronous = NORMAL");
  // KiB: no two steps look at the same pages, and the file is in memory anyway.
  execute(database->handle(), "PRAGMA cache_size = -256");
  return database;
}

/// A file that is moved aside while it is being opened would be read with the log of its successor: what
/// comes of such an opening does not count.
DatabaseFile::Attempt DatabaseFile::tryOpen() const {
  for (int attempts = 0; attempts < 100; ++attempts) {
    struct stat status {};
    if (::stat(path_.c_str(), &status) != 0) {
      const int code = errno;
      return {code == ENOENT ? State::unmade : State::failed, nullptr, {std::strerror(code), code}};
    }
    if (!S_ISREG(status.st_mode)) return {State::failed, nullptr, {"it is no file"}};
    if (status.st_size == 0) return {State::unmade, nullptr, {"it is empty"}};
    const FileIdentity identity{status.st_dev, status.st_ino};
    auto attempt = tryOpen(identity);
    if (identityOf(path_) == identity) return attempt;
  }
  return {State::failed, nullptr, {"other processes keep replacing it"}};
}

DatabaseFile::Attempt DatabaseFile::tryOpen(const FileIdentity& identity) const {
  sqlite3* handle = nullptr;
  const int code =
      sqlite3_open_v2(path_.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  if (handle == nullptr) return {State::failed, nullptr, {"out of memory", code}};
  auto database = std::make_unique<OpenDatabase>(handle, identity);
  sqlite3_busy_handler(handle, &nap, const_cast<Patience*>(&patience_));
  const auto version = userVersion(handle);
  if (version == schemaVersion) return {State::usable, std::move(database), {}};
  if (version == versionBefore)
    return {State::older, std::move(database), {"it was made by the version before, and not used since"}};
  if (version == 0) return {State::damaged, nullptr, {"it is a database of something else"}};
  if (version) return {State::failed, nullptr, {"it was made by another version"}};
  const auto state = isDamage(sqlite3_errcode(handle)) ? State::damaged : State::failed;
  return {state, nullptr, errorOf(handle)};
}

/// Under the lock.
Status DatabaseFile::make() const {
  const auto fresh = path_ + ".new";
  removeWithLogs(fresh);
  posix::Descriptor file(::open(fresh.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (file.number() < 0) return Error{std::strerror(errno), errno};
  sqlite3* opened = nullptr;
  sqlite3_open_v2(fresh.c_str(), &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> handle(opened, &sqlite3_close);
  if (!execute(opened, creation)) return errorOf(opened);
  handle = nullptr;
  // What is left of the one that stood there is none of its successor's.
  for (const char* suffix : {"-wal", "-shm", "-journal"}) ::unlink((path_ + suffix).c_str());
  if (::fdatasync(file.number()) != 0 || ::rename(fresh.c_str(), path_.c_str()) != 0)
    return Error{std::strerror(errno), errno};
  posix::syncFolder(posix::parentOf(path_));
  return Done{};
}

Status DatabaseFile::moveAside(const std::string& reason) const {
  const auto aside = path_ + ".damaged";
  removeWithLogs(aside);
  if (::rename(path_.c_str(), aside.c_str()) != 0) {
    const int code = errno;
    return Error{reason + ", and it can't be moved aside: " + std::strerror(code), code};
  }
  ::rename((path_ + "-wal").c_str(), (aside + "-wal").c_str());
  posix::standardErrorLines()("The notification database " + path_ + " is damaged (" + reason +
                              "); it is now " + aside + ", and an empty one takes its place");
  return Done{};
}

}  // namespace VorselKelp::system
