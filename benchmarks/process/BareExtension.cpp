// The least that a service extension can do: parse the payload, commit one transaction, leave in good order.

#include <sqlite3.h>

#include <boost/json.hpp>
#include <fstream>
#include <iterator>
#include <string>

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  std::ifstream file(argv[1], std::ios::binary);
  const std::string payload{std::istreambuf_iterator<char>(file), {}};
  boost::json::monotonic_resource memory;
  const auto parsed = boost::json::parse(payload, &memory);
  const std::string url(parsed.at_pointer("/aps/alert/n/data/url").as_string());

  sqlite3* database = nullptr;
  if (sqlite3_open(argv[2], &database) != SQLITE_OK) return 1;
  sqlite3_busy_timeout(database, 5000);
  sqlite3_exec(database, "PRAGMA synchronous=NORMAL", nullptr, nullptr, nullptr);
  sqlite3_exec(database, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
  sqlite3_stmt* write = nullptr;
  sqlite3_prepare_v2(database, "INSERT OR REPLACE INTO entry VALUES('vs_url', ?, '', ?)", -1, &write,
                     nullptr);
  sqlite3_bind_text(write, 1, argv[3], -1, SQLITE_STATIC);
  sqlite3_bind_text(write, 2, url.data(), static_cast<int>(url.size()), SQLITE_STATIC);
  const bool done = sqlite3_step(write) == SQLITE_DONE;
  sqlite3_finalize(write);
  sqlite3_exec(database, "COMMIT", nullptr, nullptr, nullptr);
  sqlite3_close(database);
  return done ? 0 : 1;
}
