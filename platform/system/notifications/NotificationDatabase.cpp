#include "notifications/NotificationDatabase.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <thread>
#include <utility>

#include "VorselKelpPosix/FileIO.h"

namespace VorselKelp::system {
namespace {

constexpr int schemaVersion = 3;
constexpr auto lockPatience = std::chrono::seconds(10);
constexpr auto lockNap = std::chrono::milliseconds(2);

// A notification is held in one of three states: pending (0), delivered (1), tapped (2). What came due stays
// unshown until somebody takes it to be shown.
constexpr const char* schema = R"(
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
)";

Error unusable(const std::string& path, const std::string& reason, int code) {
  return Error{"Cannot use the notification database " + path + ": " + reason, code};
}

Error errorOf(sqlite3* connection, const std::string& path) {
  if (connection == nullptr) return unusable(path, "out of memory", SQLITE_NOMEM);
  return unusable(path, sqlite3_errmsg(connection), sqlite3_errcode(connection));
}

bool execute(sqlite3* connection, const char* sql) {
  return sqlite3_exec(connection, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

/// Absent when the file is no database.
std::optional<std::int64_t> userVersion(sqlite3* handle) {
  Connection connection{handle, std::nullopt};
  Statement statement(connection, "PRAGMA user_version");
  if (!statement.step()) return std::nullopt;
  return statement.integer(0);
}

/// The database would make it for everybody to read. A file that is there already keeps its mode.
void makePrivateFile(const std::string& path) {
  const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (descriptor >= 0) ::close(descriptor);
}

}  // namespace

Status NotificationDatabase::open() {
  const std::lock_guard lock(mutex_);
  auto status = openLocked();
  endReading();
  return status;
}

Status NotificationDatabase::openLocked() {
  if (connection_ != nullptr) return Done{};
  constexpr int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
  sqlite3* connection = nullptr;
  if (sqlite3_open_v2(path_.c_str(), &connection, flags, nullptr) != SQLITE_OK) {
    sqlite3_close(connection);
    connection = nullptr;
    if (const auto made = posix::makeFolders(std::filesystem::path(path_).parent_path().string()); !made)
      return made;
    makePrivateFile(path_);
    sqlite3_open_v2(path_.c_str(), &connection, flags | SQLITE_OPEN_CREATE, nullptr);
  }
  connection_.reset(connection);
  auto status = prepareSchema();
  if (!status) connection_.reset();
  return status;
}

Status NotificationDatabase::prepareSchema() {
  auto* connection = connection_.get();
  if (connection == nullptr || sqlite3_errcode(connection) != SQLITE_OK) return errorOf(connection, path_);
  sqlite3_busy_handler(connection, &NotificationDatabase::waitForLock, this);
  // The transaction stays open for what is read first: an extension's start is too short to lock a file
  // twice.
  if (!execute(connection, "PRAGMA synchronous = OFF; BEGIN")) return errorOf(connection, path_);
  auto version = userVersion(connection);
  if (version == 0) {
    endReading();
    // Two processes may find an empty file at the same moment; the second one then finds the work done.
    if (!execute(connection, "BEGIN EXCLUSIVE")) return errorOf(connection, path_);
    version = userVersion(connection);
    if (version == 0 && !execute(connection, schema)) return errorOf(connection, path_);
    if (!execute(connection, "COMMIT")) return errorOf(connection, path_);
    version = userVersion(connection);
  }
  if (!version) return errorOf(connection, path_);
  if (*version != schemaVersion) {
    return Error{"The notification database " + path_ + " was made by another version"};
  }
  return Done{};
}

void NotificationDatabase::endReading() {
  if (connection_ != nullptr && sqlite3_get_autocommit(connection_.get()) == 0) {
    execute(connection_.get(), "COMMIT");
  }
}

int NotificationDatabase::waitForLock(void* self, int attempt) {
  auto& database = *static_cast<NotificationDatabase*>(self);
  const auto now = std::chrono::steady_clock::now();
  if (attempt == 0) database.waitingSince_ = now;
  if (!database.waits_ || now - database.waitingSince_ >= lockPatience) return 0;
  std::this_thread::sleep_for(lockNap);
  return 1;
}

Status NotificationDatabase::run(Connection& connection, platform::FunctionRef<void(Connection&)> work) {
  work(connection);
  if (!connection.failure) return Done{};
  return unusable(path_, connection.failure->description, connection.failure->code);
}

Status NotificationDatabase::use(platform::FunctionRef<void(Connection&)> work) {
  const std::lock_guard lock(mutex_);
  if (auto opened = openLocked(); !opened) return opened;
  Connection connection{connection_.get(), std::nullopt};
  auto status = run(connection, work);
  endReading();
  return status;
}

Status NotificationDatabase::transact(platform::FunctionRef<void(Connection&)> work) {
  const std::lock_guard lock(mutex_);
  if (auto opened = openLocked(); !opened) return opened;
  endReading();
  auto* handle = connection_.get();
  if (!execute(handle, "BEGIN IMMEDIATE")) return errorOf(handle, path_);
  Connection connection{handle, std::nullopt};
  auto status = run(connection, work);
  if (status && !execute(handle, "COMMIT")) status = errorOf(handle, path_);
  if (!status) execute(handle, "ROLLBACK");
  return status;
}

}  // namespace VorselKelp::system
