#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"

struct sqlite3;
struct sqlite3_stmt;

namespace VorselKelp::posix {

/// An open database of SQLite's, and the first thing that went wrong with a statement on it.
struct Connection {
  sqlite3* handle;
  std::optional<Error> failure;
};

/// One prepared statement, for databases that are not the store. A statement that could not be prepared or
/// run yields no rows; the connection, which must outlive it, notes why.
class VORSELKELP_API Statement {
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

}  // namespace VorselKelp::posix
