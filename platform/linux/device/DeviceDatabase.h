#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/FunctionRef.h"

namespace VorselKelp::linux_platform {

/// One prepared statement. A statement that could not be prepared or run yields no rows; the database notes
/// why.
class Statement {
 public:
  Statement(sqlite3* database, const char* sql);

  Statement& bind(int position, std::string_view text);
  Statement& bind(int position, const char* text) { return bind(position, std::string_view(text)); }
  Statement& bind(int position, std::int64_t number);
  Statement& bind(int position, double number);

  /// True while there is a row.
  bool step();
  /// For statements without rows, or whose rows are of no interest.
  void run();

  [[nodiscard]] std::string text(int column) const;
  [[nodiscard]] std::int64_t integer(int column) const;
  [[nodiscard]] double real(int column) const;
  [[nodiscard]] bool isNull(int column) const;

 private:
  std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement_;
};

/// The device's database, opened by its first use. It simulates a device for a developer's desk: it survives
/// killed processes, and does not pay for surviving power cuts.
class DeviceDatabase {
 public:
  explicit DeviceDatabase(std::string path) : path_(std::move(path)) {}
  DeviceDatabase(const DeviceDatabase&) = delete;
  DeviceDatabase& operator=(const DeviceDatabase&) = delete;

  Status open();

  /// Runs `work` on the open database while no other thread is inside; not at all when it can't be opened.
  /// What goes wrong is reported on standard error, once.
  void use(platform::FunctionRef<void(sqlite3*)> work);
  /// The same as one atomic step among all processes. Must not be nested.
  void transact(platform::FunctionRef<void(sqlite3*)> work);

 private:
  Status openLocked();
  Status prepareSchema();
  bool openOrReport();
  void endReading();
  void reportErrors();

  const std::string path_;
  std::mutex mutex_;
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> connection_{nullptr, &sqlite3_close};
  bool reported_ = false;
};

}  // namespace VorselKelp::linux_platform
