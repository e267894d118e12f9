#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "VorselKelp/platform/UserDefaults.h"
#include "VorselKelpPosix/RowKind.h"
#include "store/Database.h"

namespace VorselKelp::posix {

/// What a map's header row says of its entries. Written into databases.
enum class StoredMapKind : std::int64_t {
  empty = 0,
  texts = 1,
  reals = 2,
  lists = 3,
  textMaps = 4,
  mixed = 5
};

[[nodiscard]] StoredMapKind storedKind(platform::MapKind kind);
/// What entries the map really has.
[[nodiscard]] StoredMapKind storedKind(const platform::DefaultsValue::Map& map);

/// False for a map nested deeper than one level.
[[nodiscard]] bool isStorable(const platform::DefaultsValue& value);

/// True when a map of `kind` may hold `value` as an entry; for textMapMap as an entry of an inner map.
[[nodiscard]] bool isEntryOf(platform::MapKind kind, const platform::DefaultsValue& value);

/// Binds kind and value, the two columns that every row has. A map's value column is `mapKind`, or nothing
/// for an inner map. Holds the bytes of a list while the query uses them.
class RowValue {
 public:
  explicit RowValue(const platform::DefaultsValue& value, std::optional<StoredMapKind> mapKind = {});
  void bindTo(Database::Query& query) const;

 private:
  const platform::DefaultsValue& value_;
  std::optional<StoredMapKind> mapKind_;
  std::string list_;
};

/// Reads kind and value from two neighbouring columns. A map comes back without entries; a row that makes no
/// sense is absent.
[[nodiscard]] std::optional<platform::DefaultsValue> rowValue(const Database::Query& query, int kindColumn);

}  // namespace VorselKelp::posix
