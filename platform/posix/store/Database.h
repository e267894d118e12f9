#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace VorselKelp::posix {

/// The statements of the store. Each is prepared at its first use and kept.
enum class Sql {
  begin,
  commit,
  readObject,
  readHeader,
  writeObject,
  writeScalar,
  deleteObject,
  readEntry,
  readInnerMap,
  addEntryToMap,
  writeEntry,
  addInnerHeader,
  deleteEntry,
  deleteInnerMap,
  deleteEntries,
  count
};

/// One connection to one database. Not safe for several threads at once.
///
/// The first error sticks: from then on nothing is executed until takeError(), so that a sequence of steps
/// needs no check between them.
class Database {
 public:
  /// Runs one statement; give back before the same one is asked for again. Texts bound must outlive it.
  class Query {
   public:
    Query(Database& database, Sql sql);
    ~Query();
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    Query& bind(std::string_view text);
    Query& bind(std::int64_t number);
    Query& bind(double number);
    Query& bindBlob(std::string_view bytes);
    Query& bindNull();

    /// True while there is a row to read.
    bool row();
    /// Executes a statement that yields no rows; false after an error.
    bool run();

    [[nodiscard]] bool isInteger(int column) const;
    [[nodiscard]] bool isNull(int column) const;
    [[nodiscard]] std::int64_t integer(int column) const;
    [[nodiscard]] double real(int column) const;
    /// Text or blob, with its own length: NUL bytes are part of it. Valid until the next row.
    [[nodiscard]] std::string_view bytes(int column) const;

   private:
    Database& database_;
    sqlite3_stmt* statement_;
    int parameter_ = 0;
  };

  /// `patience` is how long a write waits for another process.
  explicit Database(std::chrono::milliseconds patience) : fullPatience_(patience), patience_(patience) {}
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  /// Opens the database; `flags` are SQLite's. False after an error.
  bool open(const std::string& path, int flags);
  /// Whether closing the last connection brings the log into the database and removes it. Off at first:
  /// SQLite finds the log by its name, and a connection to a file that was moved away would remove its
  /// successor's. A log that stays saves the next process to make one.
  void tidyLogWhenClosing(bool tidy);
  /// How many pages the log had after the last write of this connection; 0 before the first.
  [[nodiscard]] int logPages() const { return logPages_; }
  /// How many of them this connection has written.
  [[nodiscard]] int ownLogPages() const;
  /// Takes the log into the database, all of it durable then, and leaves it empty. False, without waiting,
  /// when another process is reading or writing.
  bool takeLogIn();
  /// Closes it; false when an error came up to then or while closing.
  bool close();
  /// For what is executed once: schema and pragmas.
  bool execute(const char* sql);
  /// Ends a transaction that was opened for reading alone; does nothing when there is none.
  void endReading();
  /// The first column of the only row of a statement executed once; 0 after an error.
  std::int64_t number(const char* sql);
  /// Undoes an open transaction, also after an error, which stays.
  void rollback();

  [[nodiscard]] bool inTransaction() const;
  [[nodiscard]] int changes() const;

  /// SQLite's extended code of the first error since the last call, 0 when there was none; and its reason in
  /// words.
  int takeError();
  [[nodiscard]] const std::string& reason() const { return reason_; }

 private:
  sqlite3_stmt* prepared(Sql sql);
  void fail(int code);
  static int waitForLock(void* self, int attempt);
  static int noteLog(void* self, sqlite3* handle, const char* name, int pages);

  sqlite3* handle_ = nullptr;
  int logPages_ = 0;
  std::array<sqlite3_stmt*, static_cast<std::size_t>(Sql::count)> statements_{};
  int error_ = 0;
  std::string reason_;
  std::chrono::steady_clock::time_point waitingSince_{};
  const std::chrono::milliseconds fullPatience_;
  std::chrono::milliseconds patience_;
};

/// What is written inside happens as a whole or not at all. Joins a transaction that is already open.
class Transaction {
 public:
  explicit Transaction(Database& database);
  /// Undoes what was not committed.
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  bool commit();

 private:
  Database& database_;
  bool open_;
};

}  // namespace VorselKelp::posix
