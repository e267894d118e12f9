#pragma once

#include <optional>
#include <string_view>

#include "VorselKelp/platform/UserDefaults.h"
#include "store/Database.h"
#include "store/ValueCoding.h"

namespace VorselKelp::posix {

/// Values and maps as rows. Each operation is one atomic step of its own or part of the transaction that is
/// open. Errors stay in the database; a read that met one is absent.
///
/// A key has one row in `object`. A map's row there is its header; its entries are rows in `entry` under
/// (key, name, 0), and those of an inner map under (key, name, inner name), beside a header row (key, name,
/// 0) of their own. The number 0 is no text, so no inner name can be taken for it.
class DefaultsStore {
 public:
  explicit DefaultsStore(Database& database) : database_(database) {}

  std::optional<platform::DefaultsValue> object(std::string_view key);
  /// The value must be storable.
  void setObject(std::string_view key, const platform::DefaultsValue& value);
  void removeObject(std::string_view key);

  std::optional<platform::DefaultsValue> mapEntry(std::string_view key, platform::EntryPath path,
                                                  platform::MapKind kind);
  /// The value must be of the entry type of `kind`.
  void setMapEntry(std::string_view key, platform::EntryPath path, platform::MapKind kind,
                   const platform::DefaultsValue& value);
  void removeMapEntry(std::string_view key, platform::EntryPath path, platform::MapKind kind);

 private:
  std::optional<platform::DefaultsValue> map(std::string_view key);
  std::optional<platform::DefaultsValue> innerMap(std::string_view key, std::string_view name);
  bool isMapOf(std::string_view key, StoredMapKind kind);
  void makeMapOf(std::string_view key, StoredMapKind kind);
  bool addEntry(std::string_view key, platform::EntryPath path, platform::MapKind kind,
                const platform::DefaultsValue& value);
  void writeHeader(std::string_view key, const platform::DefaultsValue& value,
                   std::optional<StoredMapKind> mapKind);
  void writeEntry(std::string_view key, std::string_view name, std::optional<std::string_view> inner,
                  const platform::DefaultsValue& value);
  void writeInnerMap(std::string_view key, std::string_view name, const platform::DefaultsValue& map);
  void deleteEntries(std::string_view key);

  Database& database_;
};

}  // namespace VorselKelp::posix
