// The least that a service extension can do: parse the payload, commit one transaction, leave. Like the
// extension it leaves what it wrote in the store's log, and takes the log into the database when it has
// become long.

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <boost/json.hpp>
#include <string>

namespace {

constexpr int longLog = 48;  // pages, as the extension has it

int pages = 0;

std::string readFile(const char* path) {
  std::string bytes(64 << 10, '\0');
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  const auto got = read(file, bytes.data(), bytes.size());
  close(file);
  bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  return bytes;
}

int noteLog(void*, sqlite3*, const char*, int count) {
  pages = count;
  return SQLITE_OK;
}

bool write(sqlite3* database, const char* identifier, const std::string& url) {
  sqlite3_exec(database, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
  sqlite3_stmt* write = nullptr;
  sqlite3_prepare_v2(database, "INSERT OR REPLACE INTO entry VALUES('vs_url', ?, '', ?)", -1, &write,
                     nullptr);
  sqlite3_bind_text(write, 1, identifier, -1, SQLITE_STATIC);
  sqlite3_bind_text(write, 2, url.data(), static_cast<int>(url.size()), SQLITE_STATIC);
  const bool done = sqlite3_step(write) == SQLITE_DONE;
  sqlite3_finalize(write);
  return sqlite3_exec(database, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK && done;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const std::string payload = readFile(argv[1]);
  boost::json::monotonic_resource memory;
  const auto parsed = boost::json::parse(payload, &memory);
  const std::string url(parsed.at_pointer("/aps/alert/n/data/url").as_string());

  sqlite3* database = nullptr;
  if (sqlite3_open_v2(argv[2], &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) != SQLITE_OK)
    return 1;
  sqlite3_busy_timeout(database, 5000);
  sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  sqlite3_wal_hook(database, &noteLog, nullptr);
  sqlite3_exec(database, "PRAGMA synchronous=NORMAL", nullptr, nullptr, nullptr);
  const bool done = write(database, argv[3], url);
  if (pages > longLog)
    sqlite3_wal_checkpoint_v2(database, nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
  sqlite3_close(database);
  return done ? 0 : 1;
}
