#include "support/BareStore.h"

#include <cstdlib>
#include <filesystem>

namespace VorselKelp::benchmarks {

namespace {

void execute(sqlite3* database, const std::string& sql) {
  if (sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) std::abort();
}

void make(sqlite3* database, int pageSize) {
  execute(database,
          "PRAGMA page_size=" + std::to_string(pageSize) +
              "; PRAGMA journal_mode=WAL;"
              "CREATE TABLE object(key TEXT PRIMARY KEY, value) WITHOUT ROWID;"
              "CREATE TABLE entry(key TEXT, name TEXT, inner TEXT, value, PRIMARY KEY(key, name, inner)) "
              "WITHOUT ROWID;");
}

}  // namespace

BareStore::BareStore(const std::string& file, int pageSize) {
  const bool missing = !std::filesystem::exists(file);
  if (sqlite3_open(file.c_str(), &database_) != SQLITE_OK) std::abort();
  if (missing) make(database_, pageSize);
  execute(database_, "PRAGMA synchronous=NORMAL");
  begin_ = prepare("BEGIN IMMEDIATE");
  commit_ = prepare("COMMIT");
  read_ = prepare("SELECT value FROM object WHERE key = ?");
  write_ = prepare("INSERT OR REPLACE INTO object VALUES(?, ?)");
}

BareStore::~BareStore() {
  for (auto* statement : {begin_, commit_, read_, write_, writeEntry_}) sqlite3_finalize(statement);
  sqlite3_close(database_);
}

sqlite3_stmt* BareStore::prepare(const char* sql) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v3(database_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) != SQLITE_OK)
    std::abort();
  return statement;
}

void BareStore::bind(sqlite3_stmt* statement, int index, std::string_view text) {
  sqlite3_bind_text64(statement, index, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
}

void BareStore::run(sqlite3_stmt* statement) {
  if (sqlite3_step(statement) != SQLITE_DONE) std::abort();
  sqlite3_reset(statement);
}

std::string BareStore::read(std::string_view key) {
  bind(read_, 1, key);
  std::string value;
  if (sqlite3_step(read_) == SQLITE_ROW) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(read_, 0));
    value.assign(text, static_cast<std::size_t>(sqlite3_column_bytes(read_, 0)));
  }
  sqlite3_reset(read_);
  return value;
}

void BareStore::write(std::string_view key, std::string_view value) {
  bind(write_, 1, key);
  bind(write_, 2, value);
  run(write_);
}

void BareStore::writeEntry(std::string_view key, std::string_view name, std::string_view inner,
                           std::string_view value) {
  if (!writeEntry_) writeEntry_ = prepare("INSERT OR REPLACE INTO entry VALUES(?, ?, ?, ?)");
  bind(writeEntry_, 1, key);
  bind(writeEntry_, 2, name);
  bind(writeEntry_, 3, inner);
  bind(writeEntry_, 4, value);
  run(writeEntry_);
}

}  // namespace VorselKelp::benchmarks
