#include "store/Database.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <thread>
#include <utility>

#include "store/AbsolutePaths.h"

namespace VorselKelp::posix {
namespace {

using namespace std::chrono_literals;

/// How long a write waits for another process after one has waited in vain: a process that holds the lock for
/// ever must not cost every later write the full time.
constexpr std::chrono::milliseconds spentPatience = 50ms;

/// Taking the log into the database forces both files to the disk, and whoever writes then waits for it:
/// seldom, but before the log has grown to more than 4 MiB.
constexpr int mostLogPages = 2000;

const char* textOf(Sql sql) {
  switch (sql) {
    case Sql::begin:
      return "BEGIN IMMEDIATE";
    case Sql::commit:
      return "COMMIT";
    case Sql::readObject:
      return "SELECT o.kind, o.value, e.name, e.inner_name, e.kind, e.value FROM object o "
             "LEFT JOIN entry e ON o.kind = 5 AND e.key = o.key WHERE o.key = ?1 ORDER BY e.name, "
             "e.inner_name";
    case Sql::readHeader:
      return "SELECT kind, value FROM object WHERE key = ?1";
    case Sql::writeObject:
      return "INSERT OR REPLACE INTO object(key, kind, value) VALUES(?1, ?2, ?3)";
    case Sql::writeScalar:  // changes nothing when a map stands there, whose entries have to go too
      return "INSERT INTO object(key, kind, value) VALUES(?1, ?2, ?3) ON CONFLICT(key) "
             "DO UPDATE SET kind = excluded.kind, value = excluded.value WHERE object.kind <> 5";
    case Sql::deleteObject:
      return "DELETE FROM object WHERE key = ?1";
    case Sql::readEntry:
      return "SELECT kind, value FROM entry WHERE key = ?1 AND name = ?2 AND inner_name = ?3 "
             "AND (SELECT value FROM object WHERE key = ?1 AND kind = 5) = ?4";
    case Sql::readInnerMap:
      return "SELECT kind, value, inner_name FROM entry WHERE key = ?1 AND name = ?2 "
             "AND (SELECT value FROM object WHERE key = ?1 AND kind = 5) = ?3";
    case Sql::addEntryToMap:  // changes nothing when there is no map of this kind
      return "INSERT INTO entry(key, name, inner_name, kind, value) SELECT ?1, ?2, ?3, ?4, ?5 "
             "WHERE (SELECT value FROM object WHERE key = ?1 AND kind = 5) = ?6 "
             "ON CONFLICT(key, name, inner_name) DO UPDATE SET kind = excluded.kind, value = excluded.value";
    case Sql::writeEntry:
      return "INSERT OR REPLACE INTO entry(key, name, inner_name, kind, value) VALUES(?1, ?2, ?3, ?4, ?5)";
    case Sql::addInnerHeader:
      return "INSERT OR IGNORE INTO entry(key, name, inner_name, kind, value) VALUES(?1, ?2, 0, 5, NULL)";
    case Sql::deleteEntry:
      return "DELETE FROM entry WHERE key = ?1 AND name = ?2 AND inner_name = ?3";
    case Sql::deleteInnerMap:
      return "DELETE FROM entry WHERE key = ?1 AND name = ?2";
    case Sql::deleteEntries:
      return "DELETE FROM entry WHERE key = ?1";
    case Sql::count:
      break;
  }
  return "";
}

}  // namespace

Database::~Database() {
  close();
}

bool Database::open(const std::string& path, int flags) {
  const int code = sqlite3_open_v2(path.c_str(), &handle_,
                                   flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, absolutePaths());
  if (code != SQLITE_OK) {
    fail(code);
    return false;
  }
  sqlite3_busy_handler(handle_, &Database::waitForLock, this);
  sqlite3_wal_hook(handle_, &Database::noteLog, this);
  tidyLogWhenClosing(false);
  return true;
}

void Database::tidyLogWhenClosing(bool tidy) {
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, tidy ? 0 : 1, nullptr);
}

int Database::noteLog(void* self, sqlite3* handle, const char* name, int pages) {
  static_cast<Database*>(self)->logPages_ = pages;
  // What can't be taken in now, because another process reads it, is with a later write.
  if (pages >= mostLogPages)
    sqlite3_wal_checkpoint_v2(handle, name, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
  return SQLITE_OK;
}

int Database::ownLogPages() const {
  int written = 0;
  int unused = 0;
  sqlite3_db_status(handle_, SQLITE_DBSTATUS_CACHE_WRITE, &written, &unused, 0);
  return written;
}

bool Database::takeLogIn() {
  const auto patience = std::exchange(patience_, 0ms);
  const int code = sqlite3_wal_checkpoint_v2(handle_, "main", SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
  patience_ = patience;
  return code == SQLITE_OK;
}

bool Database::close() {
  for (auto& statement : statements_) {
    sqlite3_finalize(statement);
    statement = nullptr;
  }
  const int code = sqlite3_close(handle_);
  handle_ = nullptr;
  if (code != SQLITE_OK) fail(code);
  return error_ == SQLITE_OK;
}

bool Database::execute(const char* sql) {
  if (error_ != SQLITE_OK) return false;
  const int code = sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) fail(code);
  return code == SQLITE_OK;
}

void Database::endReading() {
  if (inTransaction()) sqlite3_exec(handle_, "COMMIT", nullptr, nullptr, nullptr);
}

std::int64_t Database::number(const char* sql) {
  if (error_ != SQLITE_OK) return 0;
  sqlite3_stmt* statement = nullptr;
  std::int64_t result = 0;
  int code = sqlite3_prepare_v2(handle_, sql, -1, &statement, nullptr);
  if (code == SQLITE_OK) {
    code = sqlite3_step(statement);
    if (code == SQLITE_ROW) result = sqlite3_column_int64(statement, 0);
  }
  if (code != SQLITE_ROW && code != SQLITE_DONE) fail(code);
  sqlite3_finalize(statement);
  return result;
}

void Database::rollback() {
  // After some errors SQLite has rolled back already; and the error that led here is the one to tell.
  if (inTransaction()) sqlite3_exec(handle_, "ROLLBACK", nullptr, nullptr, nullptr);
}

bool Database::inTransaction() const {
  return sqlite3_get_autocommit(handle_) == 0;
}

int Database::changes() const {
  return sqlite3_changes(handle_);
}

int Database::takeError() {
  const int code = error_;
  error_ = SQLITE_OK;
  return code;
}

sqlite3_stmt* Database::prepared(Sql sql) {
  auto& statement = statements_[static_cast<std::size_t>(sql)];
  if (!statement && error_ == SQLITE_OK) {
    const int code =
        sqlite3_prepare_v3(handle_, textOf(sql), -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    if (code != SQLITE_OK) fail(code);
  }
  return statement;
}

void Database::fail(int code) {
  if (error_ != SQLITE_OK) return;
  error_ = code;
  reason_ = handle_ ? sqlite3_errmsg(handle_) : sqlite3_errstr(code);
  const int primary = code & 0xff;
  const bool ofTheSystem = primary == SQLITE_IOERR || primary == SQLITE_CANTOPEN || primary == SQLITE_FULL;
  if (const int number = ofTheSystem && handle_ ? sqlite3_system_errno(handle_) : 0; number != 0) {
    reason_ += std::string(" (") + std::strerror(number) + ")";
  }
  if (primary == SQLITE_BUSY) patience_ = std::min(fullPatience_, spentPatience);
}

/// Short naps instead of SQLite's own growing ones: with those, one of two busy writers can starve.
int Database::waitForLock(void* self, int attempt) {
  auto& database = *static_cast<Database*>(self);
  const auto now = std::chrono::steady_clock::now();
  if (attempt == 0) database.waitingSince_ = now;
  if (now - database.waitingSince_ >= database.patience_) return 0;
  std::this_thread::sleep_for(std::min(100us * (attempt + 1), std::chrono::microseconds(2000)));
  return 1;
}

Database::Query::Query(Database& database, Sql sql)
    : database_(database), statement_(database.prepared(sql)) {}

Database::Query::~Query() {
  if (!statement_) return;
  sqlite3_reset(statement_);
  sqlite3_clear_bindings(statement_);
}

Database::Query& Database::Query::bind(std::string_view text) {
  sqlite3_bind_text64(statement_, ++parameter_, text.empty() ? "" : text.data(), text.size(), SQLITE_STATIC,
                      SQLITE_UTF8);
  return *this;
}

Database::Query& Database::Query::bind(std::int64_t number) {
  sqlite3_bind_int64(statement_, ++parameter_, number);
  return *this;
}

Database::Query& Database::Query::bind(double number) {
  sqlite3_bind_double(statement_, ++parameter_, number);
  return *this;
}

Database::Query& Database::Query::bindBlob(std::string_view bytes) {
  sqlite3_bind_blob64(statement_, ++parameter_, bytes.empty() ? "" : bytes.data(), bytes.size(),
                      SQLITE_STATIC);
  return *this;
}

Database::Query& Database::Query::bindNull() {
  sqlite3_bind_null(statement_, ++parameter_);
  return *this;
}

bool Database::Query::row() {
  if (!statement_ || database_.error_ != SQLITE_OK) return false;
  const int code = sqlite3_step(statement_);
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) {
    if (!sqlite3_stmt_readonly(statement_)) database_.patience_ = database_.fullPatience_;
  } else {
    database_.fail(code);
  }
  return false;
}

bool Database::Query::run() {
  row();
  return database_.error_ == SQLITE_OK;
}

bool Database::Query::isInteger(int column) const {
  return sqlite3_column_type(statement_, column) == SQLITE_INTEGER;
}

bool Database::Query::isNull(int column) const {
  return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

std::int64_t Database::Query::integer(int column) const {
  return sqlite3_column_int64(statement_, column);
}

double Database::Query::real(int column) const {
  return sqlite3_column_double(statement_, column);
}

std::string_view Database::Query::bytes(int column) const {
  const auto* data = static_cast<const char*>(sqlite3_column_blob(statement_, column));
  const int size = sqlite3_column_bytes(statement_, column);
  return data ? std::string_view(data, static_cast<std::size_t>(size)) : std::string_view();
}

Transaction::Transaction(Database& database) : database_(database), open_(!database.inTransaction()) {
  if (open_) open_ = Database::Query(database, Sql::begin).run();
}

Transaction::~Transaction() {
  if (open_) database_.rollback();
}

bool Transaction::commit() {
  if (!open_) return true;
  if (Database::Query(database_, Sql::commit).run()) open_ = false;
  return !open_;
}

}  // namespace VorselKelp::posix
