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

namespace VorselKelp::simulator {

/// An open database, and the first thing that went wrong with a statement on it.
struct Connection {
  sqlite3* handle;
  std::optional<Error> failure;
};

/// One prepared statement. A statement that could not be prepared or run yields no rows; the connection,
/// which must outlive it, notes why.
class Statement {
 public:
  Statement(Connection& connection, const char* sql);

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
  [[nodiscard]] int advance();
  void note(int code);

  Connection& connection_;
  std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement_;
};

/// The database of the notification store, opened by its first use. It survives killed processes, and does
/// not pay for surviving power cuts. The file is for its owner alone.
class DeviceDatabase {
 public:
  explicit DeviceDatabase(std::string path) : path_(std::move(path)) {}
  DeviceDatabase(const DeviceDatabase&) = delete;
  DeviceDatabase& operator=(const DeviceDatabase&) = delete;

  Status open();

  /// Runs `work` on the open database while no other thread is inside; not at all when it can't be opened.
  Status use(platform::FunctionRef<void(Connection&)> work);
  /// The same as one atomic step among all processes, which is through when this succeeds, and has left no
  /// trace when it fails. Must not be nested.
  Status transact(platform::FunctionRef<void(Connection&)> work);
  /// Tells a failure on standard error that nobody else will tell; only the first one.
  void report(const Status& status);

 private:
  Status openLocked();
  Status prepareSchema();
  Status run(Connection& connection, platform::FunctionRef<void(Connection&)> work);
  void endReading();

  const std::string path_;
  std::mutex mutex_;
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> connection_{nullptr, &sqlite3_close};
  bool reported_ = false;
};

}  // namespace VorselKelp::simulator
