#include "VorselKelpLinux/StoreListing.h"

#include <filesystem>

#include "VorselKelpLinux/DiskFileManager.h"
#include "VorselKelpLinux/SqliteUserDefaults.h"
#include "device/DeviceDatabase.h"
#include "support/SafeName.h"

namespace VorselKelp::linux_platform {
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

std::vector<std::string> keysIn(const std::string& file) {
  std::vector<std::string> keys;
  sqlite3* opened = nullptr;
  sqlite3_open_v2(file.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr);
  const std::unique_ptr<sqlite3, int (*)(sqlite3*)> connection(opened, &sqlite3_close);
  sqlite3_busy_timeout(connection.get(), 5000);
  Connection reading{connection.get(), std::nullopt};
  Statement rows(reading, "SELECT key FROM object ORDER BY key");
  while (rows.step()) keys.push_back(rows.text(0));
  return keys;
}

/// A store that was never used stays unmade.
JSONAny listDomain(const std::string& file) {
  JSONAny::Dictionary json;
  std::error_code error;
  if (!std::filesystem::exists(file, error)) return json;
  UserDefaultsOptions options;
  options.standardFile = file;
  const auto domain = makeUserDefaults(std::move(options))->standard();
  for (const auto& key : keysIn(file)) {
    if (const auto value = domain->object(key)) json.push_back({key, toJSON(*value)});
  }
  return json;
}

/// Absent when there is no group, or the device does not know it.
std::optional<std::string> groupStore(const Manifest& manifest, const DeviceHome& home) {
  if (!manifest.appGroupId || manifest.appGroupId->empty()) return std::nullopt;
  const auto files = makeFileManager({home.groupContainers(), manifest.groups, home.path()});
  const auto container = files->containerPath(*manifest.appGroupId);
  if (!container) return std::nullopt;
  return *container + "/Library/Preferences/" + safeName(*manifest.appGroupId) + ".sqlite";
}

/// Empty when the database is whole.
std::string problemOf(const std::string& file) {
  sqlite3* opened = nullptr;
  const int code = sqlite3_open_v2(file.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr);
  const std::unique_ptr<sqlite3, int (*)(sqlite3*)> connection(opened, &sqlite3_close);
  if (code != SQLITE_OK) return sqlite3_errmsg(opened);
  sqlite3_busy_timeout(connection.get(), 5000);
  Connection reading{connection.get(), std::nullopt};
  Statement check(reading, "PRAGMA integrity_check(1)");
  if (!check.step()) return sqlite3_errmsg(opened);
  auto found = check.text(0);
  return found == "ok" ? std::string() : found;
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
  health.problem = problemOf(health.file);
  health.replaced = std::filesystem::exists(health.file + ".damaged", error);
  return health;
}

JSONAny listStandardDefaults(const Manifest& manifest, const DeviceHome& home, ProcessKind kind) {
  return listDomain(home.standardDefaults(manifest, kind));
}

}  // namespace VorselKelp::linux_platform
