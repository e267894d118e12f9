#include "state/State.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <system_error>
#include <utility>

#include "VorselKelpPosix/FileIO.h"
#include "VorselKelpPosix/LockFile.h"

namespace VorselKelp::agent {
namespace {

using posix::Connection;
using posix::Statement;

constexpr double day = 24 * 3600;
constexpr double keysKept = 7 * day;
constexpr std::int64_t mostWaiting = 10'000;
/// From so many bytes on the log is dearer to read, at the next start, than to take in at the end.
constexpr std::uintmax_t longLog = 256 << 10;
constexpr int othersPatience = 2000;  // milliseconds; who looks into it from outside has it for a moment

constexpr std::int64_t schemaVersion = 2;
constexpr const char* schema = R"(
BEGIN EXCLUSIVE;
CREATE TABLE IF NOT EXISTS setting(name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS keys(serial INTEGER PRIMARY KEY, private BLOB NOT NULL, public BLOB NOT NULL,
                                auth BLOB NOT NULL, replaced REAL);
CREATE TABLE IF NOT EXISTS spool(serial INTEGER PRIMARY KEY AUTOINCREMENT, identifier TEXT NOT NULL,
                                 message BLOB NOT NULL);
CREATE TABLE IF NOT EXISTS seen(identifier TEXT PRIMARY KEY, time REAL NOT NULL) WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS shown(identifier TEXT PRIMARY KEY, number INTEGER NOT NULL, desktop TEXT NOT NULL)
  WITHOUT ROWID;
CREATE INDEX IF NOT EXISTS seenByTime ON seen(time);
PRAGMA user_version = 2;
COMMIT;
)";

bool execute(sqlite3* database, const char* sql) {
  return sqlite3_exec(database, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

Error unusable(const std::string& path, const Error& reason) {
  return {"Cannot use the push agent's " + path + ": " + reason.description, reason.code};
}

Error lastError(sqlite3* database) {
  if (database == nullptr) return {"out of memory", SQLITE_NOMEM};
  return {sqlite3_errmsg(database), sqlite3_errcode(database)};
}

Result<std::int64_t> versionOf(sqlite3* database) {
  Connection connection{database, std::nullopt};
  Statement row(connection, "PRAGMA user_version");
  if (row.step()) return row.integer(0);
  return connection.failure.value_or(Error{"it has no version"});
}

/// What a newer version has written stays as it is.
Status prepare(sqlite3* database, const std::string& folder) {
  const auto written = versionOf(database);
  if (!written) return written.error();
  if (*written > schemaVersion)
    return Error{"a newer version wrote it; install that version again, or remove the folder " + folder +
                 " to register anew, which loses the messages that wait there"};
  // 256 KiB: no two steps look at the same pages.
  if (!execute(database, "PRAGMA cache_size = -256; PRAGMA journal_mode = WAL")) return lastError(database);
  if (*written == schemaVersion) return Done{};
  if (!execute(database, schema)) return lastError(database);
  posix::syncFolder(folder);
  return Done{};
}

/// The database would make it for everybody to read.
void makePrivateFile(const std::string& path) {
  const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (descriptor >= 0) ::close(descriptor);
}

bool isNew(Connection& database, const std::string& identifier, double now) {
  Statement(database, "INSERT OR IGNORE INTO seen(identifier, time) VALUES(?1, ?2)")
      .bind(1, identifier)
      .bind(2, now)
      .run();
  return sqlite3_changes(database.handle) > 0;
}

}  // namespace

void State::Closer::operator()(sqlite3* database) const {
  sqlite3_close(database);
}

Result<std::unique_ptr<State>> State::open(const std::string& folder) {
  if (const auto made = posix::makeFolders(folder); !made) return made.error();
  ::chmod(folder.c_str(), 0700);
  auto lock = posix::lockFile(folder + "/agent.lock");
  if (!lock) return lock.error();
  const auto path = folder + "/agent.sqlite";
  makePrivateFile(path);
  sqlite3* opened = nullptr;
  const int code =
      sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  Database database(opened);
  if (code != SQLITE_OK) return unusable(path, lastError(opened));
  sqlite3_busy_timeout(opened, othersPatience);
  // The log stays: the next start is spared making one, and waiting for the disk with that.
  sqlite3_db_config(opened, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  if (const auto prepared = prepare(opened, folder); !prepared) return unusable(path, prepared.error());
  return std::unique_ptr<State>(new State(*std::move(lock), std::move(database), path));
}

State::State(std::unique_ptr<platform::FileLock> lock, Database database, std::string path)
    : lock_(std::move(lock)), path_(std::move(path)), database_(std::move(database)) {}

State::~State() {
  prepared_.clear();
  std::error_code unknown;
  const auto logSize = std::filesystem::file_size(path_ + "-wal", unknown);
  if (!unknown && logSize > longLog)
    sqlite3_wal_checkpoint_v2(database_.get(), nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
}

Status State::look(platform::FunctionRef<void(Connection&)> work) {
  const std::lock_guard lock(mutex_);
  Connection connection{database_.get(), std::nullopt, &prepared_};
  work(connection);
  if (connection.failure) return unusable(path_, *connection.failure);
  return Done{};
}

Status State::transact(platform::FunctionRef<void(Connection&)> work, bool durable) {
  const std::lock_guard lock(mutex_);
  if (auto set = setDurable(durable); !set) return set;
  Connection connection{database_.get(), std::nullopt, &prepared_};
  Statement(connection, "BEGIN IMMEDIATE").run();
  if (connection.failure) return unusable(path_, *connection.failure);
  work(connection);
  if (!connection.failure) Statement(connection, "COMMIT").run();
  if (!connection.failure) return Done{};
  if (sqlite3_get_autocommit(connection.handle) == 0) execute(connection.handle, "ROLLBACK");
  return unusable(path_, *connection.failure);
}

/// Shown twice after a power cut is better than a wait for the disk with each step.
Status State::setDurable(bool durable) {
  if (durable == durable_) return Done{};
  // Not a statement that stays prepared: this one does its work while it is.
  if (!execute(database_.get(), durable ? "PRAGMA synchronous = FULL" : "PRAGMA synchronous = NORMAL"))
    return unusable(path_, lastError(database_.get()));
  durable_ = durable;
  return Done{};
}

Result<std::optional<std::string>> State::setting(const char* name) {
  std::optional<std::string> value;
  const auto status = look([&](Connection& database) {
    Statement row(database, "SELECT value FROM setting WHERE name = ?1");
    if (row.bind(1, name).step()) value = row.text(0);
  });
  if (!status) return status.error();
  return value;
}

Status State::set(const std::vector<Setting>& settings) {
  return transact(
      [&](Connection& database) {
        for (const auto& [name, value] : settings) {
          if (!value) {
            Statement(database, "DELETE FROM setting WHERE name = ?1").bind(1, name).run();
            continue;
          }
          Statement(database, "INSERT OR REPLACE INTO setting(name, value) VALUES(?1, ?2)")
              .bind(1, name)
              .bind(2, *value)
              .run();
        }
      },
      true);
}

Result<std::vector<webpush::ReceiverKeys>> State::keys(double now) {
  std::vector<webpush::ReceiverKeys> found;
  const auto status = look([&](Connection& database) {
    Statement rows(database,
                   "SELECT private, public, auth FROM keys WHERE replaced IS NULL OR replaced > ?1 "
                   "ORDER BY serial DESC");
    rows.bind(1, now - keysKept);
    while (rows.step()) found.push_back({rows.text(0), rows.text(1), rows.text(2)});
  });
  if (!status) return status.error();
  return found;
}

Status State::addKeys(const webpush::ReceiverKeys& keys, double now) {
  return transact(
      [&](Connection& database) {
        Statement(database, "DELETE FROM keys WHERE replaced <= ?1").bind(1, now - keysKept).run();
        Statement(database, "UPDATE keys SET replaced = ?1 WHERE replaced IS NULL").bind(1, now).run();
        Statement(database, "INSERT INTO keys(private, public, auth) VALUES(?1, ?2, ?3)")
            .bind(1, keys.privateKey)
            .bind(2, keys.publicKey)
            .bind(3, keys.auth)
            .run();
      },
      true);
}

Result<std::vector<std::optional<std::int64_t>>> State::keep(const std::vector<Message>& messages,
                                                             double now) {
  std::vector<std::optional<std::int64_t>> serials;
  bool full = false;
  const auto status = transact(
      [&](Connection& database) {
        Statement count(database, "SELECT count(*) FROM spool");
        full = count.step() && count.integer(0) + static_cast<std::int64_t>(messages.size()) > mostWaiting;
        if (full) return;
        Statement(database, "DELETE FROM seen WHERE time < ?1").bind(1, now - day).run();
        for (const auto& message : messages) {
          serials.emplace_back();
          if (!isNew(database, message.identifier, now)) continue;
          Statement(database, "INSERT INTO spool(identifier, message) VALUES(?1, ?2)")
              .bind(1, message.identifier)
              .bind(2, message.bytes)
              .run();
          serials.back() = sqlite3_last_insert_rowid(database.handle);
        }
      },
      true);
  if (!status) return status.error();
  if (full) return Error{"Too many messages wait to be shown"};
  return serials;
}

Result<std::vector<std::int64_t>> State::waiting() {
  std::vector<std::int64_t> found;
  const auto status = look([&](Connection& database) {
    Statement rows(database, "SELECT serial FROM spool ORDER BY serial");
    while (rows.step()) found.push_back(rows.integer(0));
  });
  if (!status) return status.error();
  return found;
}

Result<std::optional<Message>> State::message(std::int64_t serial) {
  std::optional<Message> found;
  const auto status = look([&](Connection& database) {
    Statement row(database, "SELECT identifier, message FROM spool WHERE serial = ?1");
    if (row.bind(1, serial).step()) found = Message{row.text(0), row.text(1)};
  });
  if (!status) return status.error();
  return found;
}

Status State::apply(const Changes& changes) {
  return transact([&](Connection& database) {
    Statement remove(database, "DELETE FROM spool WHERE serial = ?1");
    for (const auto serial : changes.dropped) remove.bind(1, serial).run();
    Statement forget(database, "DELETE FROM shown WHERE identifier = ?1");
    Statement write(database, "INSERT OR REPLACE INTO shown(identifier, number, desktop) VALUES(?1, ?2, ?3)");
    for (const auto& [identifier, number, desktop] : changes.shown) {
      if (number == 0) {
        forget.bind(1, identifier).run();
      } else {
        write.bind(1, identifier).bind(2, std::int64_t{number}).bind(3, desktop).run();
      }
    }
  });
}

Result<std::vector<State::Shown>> State::shown(const std::string& desktop) {
  std::vector<Shown> found;
  const auto status = transact([&](Connection& database) {
    Statement(database, "DELETE FROM shown WHERE desktop <> ?1").bind(1, desktop).run();
    Statement rows(database, "SELECT identifier, number FROM shown");
    while (rows.step()) found.push_back({rows.text(0), static_cast<std::uint32_t>(rows.integer(1)), desktop});
  });
  if (!status) return status.error();
  return found;
}

}  // namespace VorselKelp::agent
