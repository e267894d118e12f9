#include "VorselKelpPosix/Statement.h"

#include <sqlite3.h>

#include <utility>

namespace VorselKelp::posix {

StatementHandle PreparedStatements::take(std::string_view sql) {
  const auto found = free_.extract(sql);
  return found ? std::move(found.mapped()) : StatementHandle(nullptr, &sqlite3_finalize);
}

void PreparedStatements::giveBack(StatementHandle statement) {
  if (sqlite3_reset(statement.get()) != SQLITE_OK) return;
  sqlite3_clear_bindings(statement.get());
  const std::string_view sql = sqlite3_sql(statement.get());
  free_.emplace(sql, std::move(statement));
}

Statement::Statement(Connection& connection, const char* sql)
    : connection_(connection), statement_(nullptr, &sqlite3_finalize) {
  if (connection.prepared != nullptr) statement_ = connection.prepared->take(sql);
  if (statement_ != nullptr) return;
  sqlite3_stmt* statement = nullptr;
  const unsigned flags = connection.prepared != nullptr ? SQLITE_PREPARE_PERSISTENT : 0;
  note(sqlite3_prepare_v3(connection.handle, sql, -1, flags, &statement, nullptr));
  statement_.reset(statement);
}

Statement::~Statement() {
  if (connection_.prepared != nullptr && statement_ != nullptr && !connection_.failure)
    connection_.prepared->giveBack(std::move(statement_));
}

void Statement::note(int code) {
  if (code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE || connection_.failure) return;
  connection_.failure = Error{sqlite3_errmsg(connection_.handle), code};
}

int Statement::advance() {
  if (statement_ == nullptr) return SQLITE_ERROR;
  const int code = sqlite3_step(statement_.get());
  note(code);
  return code;
}

Statement& Statement::bind(int position, std::string_view text) {
  note(sqlite3_bind_text64(statement_.get(), position, text.data(), text.size(), SQLITE_TRANSIENT,
                           SQLITE_UTF8));
  return *this;
}

Statement& Statement::bind(int position, std::int64_t number) {
  note(sqlite3_bind_int64(statement_.get(), position, number));
  return *this;
}

Statement& Statement::bind(int position, double number) {
  note(sqlite3_bind_double(statement_.get(), position, number));
  return *this;
}

bool Statement::step() {
  return advance() == SQLITE_ROW;
}

void Statement::run() {
  while (step()) {
  }
  sqlite3_reset(statement_.get());
}

std::string Statement::text(int column) const {
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_.get(), column));
  const auto count = static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column));
  return bytes != nullptr ? std::string(bytes, count) : std::string();
}

std::int64_t Statement::integer(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}
double Statement::real(int column) const {
  return sqlite3_column_double(statement_.get(), column);
}
bool Statement::isNull(int column) const {
  return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

}  // namespace VorselKelp::posix
