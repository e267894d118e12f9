#include "VorselKelpSimulator/StoreListing.h"

#include <sqlite3.h>
#include <unistd.h>

#include <filesystem>

#include "VorselKelpPosix/DiskFileManager.h"
#include "VorselKelpPosix/Hex.h"
#include "VorselKelpPosix/RowKind.h"
#include "VorselKelpPosix/SafeName.h"
#include "VorselKelpPosix/SqliteUserDefaults.h"
#include "VorselKelpPosix/Statement.h"

namespace VorselKelp::simulator {
namespace {

JSONAny toJSON(const platform::DefaultsValue& value) {
  if (const auto* list = value.as<platform::TextList>()) return JSONAny::List(list->begin(), list->end());
  if (const auto* map = value.as<platform::DefaultsValue::Map>()) {
    JSONAny::Dictionary json;
    for (const auto& [key, entry] : *map) json.push_back({key, toJSON(entry)});
    return json;
  }
  if (const auto* flag = value.as<bool>()) return *flag;
  if (const auto* integer = value.as<std::int64_t>()) return *integer;
  if (const auto* real = value.as<double>()) return *real;
  return *value.as<std::string>();
}

/// For a path in a database's URI.
std::string percentEncoded(const std::string& path) {
  std::string encoded;
  for (const char c : path) {
    if (c == '%' || c == '?' || c == '#') {
      encoded += '%' + posix::hexOf(std::string(1, c));
    } else {
      encoded += c;
    }
  }
  return encoded;
}

std::vector<std::string> keysIn(const std::string& file) {
  std::vector<std::string> keys;
  sqlite3* opened = nullptr;
  sqlite3_open_v2(file.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr);
  const std::unique_ptr<sqlite3, int (*)(sqlite3*)> connection(opened, &sqlite3_close);
  sqlite3_busy_timeout(connection.get(), 5000);
  posix::Connection reading{connection.get(), std::nullopt};
  posix::Statement rows(reading, "SELECT key FROM object ORDER BY key");
  while (rows.step()) keys.push_back(rows.text(0));
  return keys;
}

/// A store that was never used stays unmade.
JSONAny listDomain(const std::string& file) {
  JSONAny::Dictionary json;
  std::error_code error;
  if (!std::filesystem::exists(file, error)) return json;
  posix::UserDefaultsOptions options;
  options.standardFile = file;
  const auto domain = posix::makeUserDefaults(std::move(options))->standard();
  for (const auto& key : keysIn(file)) {
    if (const auto value = domain->object(key)) json.push_back({key, toJSON(*value)});
  }
  return json;
}

/// Absent when there is no group, or the device does not know it.
std::optional<std::string> groupStore(const Manifest& manifest, const DeviceHome& home) {
  if (!manifest.appGroupId || manifest.appGroupId->empty()) return std::nullopt;
  const auto files = posix::makeFileManager({home.groupContainers(), manifest.groups, home.path()});
  const auto container = files->containerPath(*manifest.appGroupId);
  if (!container) return std::nullopt;
  return *container + "/Library/Preferences/" + posix::safeName(*manifest.appGroupId) + ".sqlite";
}

using Handle = std::unique_ptr<sqlite3, int (*)(sqlite3*)>;

/// A log beside the file is part of it, and only who may write can read that.
Handle openForReading(const std::string& file) {
  sqlite3* opened = nullptr;
  const auto folder = std::filesystem::path(file).parent_path();
  if (::access(folder.c_str(), W_OK) == 0 && ::access(file.c_str(), W_OK) == 0) {
    sqlite3_open_v2(file.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr);
  } else {
    const auto uri = "file:" + percentEncoded(file) + "?immutable=1";
    sqlite3_open_v2(uri.c_str(), &opened, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr);
  }
  sqlite3_busy_timeout(opened, 5000);
  return {opened, &sqlite3_close};
}

JSONAny valueOf(const posix::Statement& row) {
  switch (static_cast<posix::RowKind>(row.integer(1))) {
    case posix::RowKind::boolean:
      return row.integer(2) != 0;
    case posix::RowKind::integer:
      return row.integer(2);
    case posix::RowKind::real:
      return row.real(2);
    case posix::RowKind::text:
      return row.text(2);
    default:
      return {};
  }
}

void inspect(const std::string& file, StoreHealth& health) {
  const auto handle = openForReading(file);
  posix::Connection reading{handle.get(), std::nullopt};
  posix::Statement check(reading, "PRAGMA integrity_check(1)");
  const bool checked = check.step();
  if (checked && check.text(0) != "ok") {
    health.damaged = true;
    health.problem = check.text(0);
    return;
  }
  JSONAny::Dictionary values;
  posix::Statement rows(reading, "SELECT key, kind, value FROM object ORDER BY key");
  while (rows.step()) values.push_back({rows.text(0), valueOf(rows)});
  health.values = std::move(values);
  if (!reading.failure) return;
  const int code = reading.failure->code & 0xff;
  health.damaged = code == SQLITE_CORRUPT || code == SQLITE_NOTADB;
  health.problem = reading.failure->description;
}

}  // namespace

JSONAny listGroupDefaults(const Manifest& manifest, const DeviceHome& home) {
  const auto file = groupStore(manifest, home);
  return file ? listDomain(*file) : JSONAny::Dictionary{};
}

StoreHealth inspectGroupStore(const Manifest& manifest, const DeviceHome& home) {
  StoreHealth health;
  health.file = groupStore(manifest, home).value_or("");
  std::error_code error;
  health.exists = !health.file.empty() && std::filesystem::exists(health.file, error);
  if (!health.exists) return health;
  inspect(health.file, health);
  health.replaced = std::filesystem::exists(health.file + ".damaged", error);
  return health;
}

JSONAny listStandardDefaults(const Manifest& manifest, const DeviceHome& home, ProcessKind kind) {
  return listDomain(home.standardDefaults(manifest, kind));
}

}  // namespace VorselKelp::simulator
