#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace VorselKelp::benchmarks {

/// The plainest key-value store on SQLite that is as safe as the library's: prepared statements, one row per
/// key, one per map entry, the same journal. What the library's store is measured against.
class BareStore {
 public:
  /// Makes the store when it is missing.
  explicit BareStore(const std::string& file, int pageSize = 4096);
  BareStore(const BareStore&) = delete;
  BareStore& operator=(const BareStore&) = delete;
  ~BareStore();

  void begin() { run(begin_); }
  void commit() { run(commit_); }
  std::string read(std::string_view key);
  void write(std::string_view key, std::string_view value);
  void writeEntry(std::string_view key, std::string_view name, std::string_view inner,
                  std::string_view value);

 private:
  sqlite3_stmt* prepare(const char* sql);
  static void bind(sqlite3_stmt* statement, int index, std::string_view text);
  static void run(sqlite3_stmt* statement);

  sqlite3* database_ = nullptr;
  sqlite3_stmt* begin_ = nullptr;
  sqlite3_stmt* commit_ = nullptr;
  sqlite3_stmt* read_ = nullptr;
  sqlite3_stmt* write_ = nullptr;
  sqlite3_stmt* writeEntry_ = nullptr;
};

}  // namespace VorselKelp::benchmarks
