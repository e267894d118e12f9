#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"

struct sqlite3;
struct sqlite3_stmt;

namespace VorselKelp::posix {

using StatementHandle = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;

/// Statements of one open database that stay prepared from one use to the next. They go before the database
/// is closed. Not for two threads at once.
class VORSELKELP_API PreparedStatements {
 public:
  /// Null: none is free.
  StatementHandle take(std::string_view sql);
  /// It keeps no row, and nothing that was bound to it.
  void giveBack(StatementHandle statement);
  void clear() { free_.clear(); }

 private:
  std::unordered_map<std::string_view, StatementHandle> free_;
};

/// An open database of SQLite's, and the first thing that went wrong with a statement on it.
struct Connection {
  sqlite3* handle;
  std::optional<Error> failure;
  PreparedStatements* prepared = nullptr;  ///< null: each statement is prepared for its one use
};

/// One prepared statement, for databases that are not the store. A statement that could not be prepared or
/// run yields no rows; the connection, which must outlive it, notes why.
class VORSELKELP_API Statement {
 public:
  Statement(Connection& connection, const char* sql);
  ~Statement();
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

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
  StatementHandle statement_;
};

}  // namespace VorselKelp::posix
