#include "store/DefaultsStore.h"

namespace VorselKelp::posix {
namespace {

using platform::DefaultsValue;
using platform::EntryPath;
using platform::MapKind;
using Query = Database::Query;

constexpr std::int64_t noInnerName = 0;

/// Binds the third part of an entry's primary key.
void bindInner(Query& query, std::string_view inner) {
  if (inner.empty()) {
    query.bind(noInnerName);
  } else {
    query.bind(inner);
  }
}

}  // namespace

std::optional<DefaultsValue> DefaultsStore::object(std::string_view key) {
  {
    Query query(database_, Sql::readHeader);
    query.bind(key);
    if (!query.row()) return {};
    auto value = rowValue(query, 0);
    if (!value || !value->as<DefaultsValue::Map>()) return value;
  }
  return map(key);
}

/// Header and entries by one statement: together they are one atomic step.
std::optional<DefaultsValue> DefaultsStore::map(std::string_view key) {
  Query query(database_, Sql::readObject);
  query.bind(key);
  if (!query.row()) return {};
  auto result = rowValue(query, 0);
  auto* map = result ? std::get_if<DefaultsValue::Map>(&result->value) : nullptr;
  if (!map) return result;  // something else by now

  // Rows come in the order of names. An empty inner map is a row without an inner name; one with entries
  // needs none.
  for (bool more = !query.isNull(2); more; more = query.row()) {
    auto value = rowValue(query, 4);
    if (!value) continue;
    if (query.isInteger(3)) {
      map->insert_or_assign(map->end(), std::string(query.bytes(2)), std::move(*value));
    } else {
      auto& holder = (*map)[std::string(query.bytes(2))];
      if (!holder.as<DefaultsValue::Map>()) holder.value = DefaultsValue::Map{};
      auto& inner = std::get<DefaultsValue::Map>(holder.value);
      inner.insert_or_assign(inner.end(), std::string(query.bytes(3)), std::move(*value));
    }
  }
  return result;
}

void DefaultsStore::setObject(std::string_view key, const DefaultsValue& value) {
  const auto* map = value.as<DefaultsValue::Map>();
  if (!map) {
    const RowValue row(value);
    Query query(database_, Sql::writeScalar);
    row.bindTo(query.bind(key));
    if (!query.run() || database_.changes() > 0) return;
  }
  Transaction transaction(database_);
  deleteEntries(key);
  writeHeader(key, value, map ? std::optional(storedKind(*map)) : std::nullopt);
  if (map) {
    for (const auto& [name, entry] : *map) {
      if (entry.as<DefaultsValue::Map>()) {
        writeInnerMap(key, name, entry);
      } else {
        writeEntry(key, name, std::nullopt, entry);
      }
    }
  }
  transaction.commit();
}

void DefaultsStore::removeObject(std::string_view key) {
  Transaction transaction(database_);
  deleteEntries(key);
  Query(database_, Sql::deleteObject).bind(key).run();
  transaction.commit();
}

std::optional<DefaultsValue> DefaultsStore::mapEntry(std::string_view key, EntryPath path, MapKind kind) {
  if (kind == MapKind::textMapMap && path.inner.empty()) return innerMap(key, path.entry);
  Query query(database_, Sql::readEntry);
  query.bind(key).bind(path.entry);
  bindInner(query, kind == MapKind::textMapMap ? path.inner : std::string_view());
  query.bind(static_cast<std::int64_t>(storedKind(kind)));
  if (!query.row()) return {};
  return rowValue(query, 0);
}

std::optional<DefaultsValue> DefaultsStore::innerMap(std::string_view key, std::string_view name) {
  Query query(database_, Sql::readInnerMap);
  query.bind(key).bind(name).bind(static_cast<std::int64_t>(StoredMapKind::textMaps));
  if (!query.row()) return {};
  DefaultsValue::Map map;
  do {
    auto value = rowValue(query, 0);
    if (value && !query.isInteger(2)) map.insert_or_assign(std::string(query.bytes(2)), std::move(*value));
  } while (query.row());
  return DefaultsValue{std::move(map)};
}

void DefaultsStore::setMapEntry(std::string_view key, EntryPath path, MapKind kind,
                                const DefaultsValue& value) {
  if (addEntry(key, path, kind, value)) return;
  Transaction transaction(database_);
  // Another process may have made the map since: only now does nobody come between the look and the making.
  if (!isMapOf(key, storedKind(kind))) makeMapOf(key, storedKind(kind));
  const bool nested = kind == MapKind::textMapMap;
  writeEntry(key, path.entry, nested ? std::optional(path.inner) : std::nullopt, value);
  transaction.commit();
}

void DefaultsStore::removeMapEntry(std::string_view key, EntryPath path, MapKind kind) {
  Transaction transaction(database_);
  if (!isMapOf(key, storedKind(kind))) return;
  if (kind == MapKind::textMapMap && path.inner.empty()) {
    Query(database_, Sql::deleteInnerMap).bind(key).bind(path.entry).run();
  } else {
    Query query(database_, Sql::deleteEntry);
    query.bind(key).bind(path.entry);
    bindInner(query, kind == MapKind::textMapMap ? path.inner : std::string_view());
    query.run();
    // An inner map that loses its last entry stays, empty.
    if (kind == MapKind::textMapMap && database_.changes() > 0)
      Query(database_, Sql::addInnerHeader).bind(key).bind(path.entry).run();
  }
  transaction.commit();
}

bool DefaultsStore::isMapOf(std::string_view key, StoredMapKind kind) {
  Query query(database_, Sql::readHeader);
  return query.bind(key).row() && query.integer(0) == static_cast<std::int64_t>(RowKind::map) &&
         query.integer(1) == static_cast<std::int64_t>(kind);
}

/// Puts a map without entries in the place of whatever stands there. That a map of another kind may have lost
/// all of its entries needs no look: replacing it leaves the same as adding to it.
void DefaultsStore::makeMapOf(std::string_view key, StoredMapKind kind) {
  deleteEntries(key);
  writeHeader(key, DefaultsValue{DefaultsValue::Map{}}, kind);
}

/// True when it is done, or failed for good; false when the map has to be made first.
bool DefaultsStore::addEntry(std::string_view key, EntryPath path, MapKind kind, const DefaultsValue& value) {
  const RowValue row(value);
  const bool nested = kind == MapKind::textMapMap;
  Query query(database_, Sql::addEntryToMap);
  query.bind(key).bind(path.entry);
  if (nested) {
    query.bind(path.inner);
  } else {
    query.bind(noInnerName);
  }
  row.bindTo(query);
  query.bind(static_cast<std::int64_t>(storedKind(kind)));
  return !query.run() || database_.changes() > 0;
}

void DefaultsStore::writeHeader(std::string_view key, const DefaultsValue& value,
                                std::optional<StoredMapKind> mapKind) {
  const RowValue row(value, mapKind);
  Query query(database_, Sql::writeObject);
  row.bindTo(query.bind(key));
  query.run();
}

void DefaultsStore::writeEntry(std::string_view key, std::string_view name,
                               std::optional<std::string_view> inner, const DefaultsValue& value) {
  const RowValue row(value);
  Query query(database_, Sql::writeEntry);
  query.bind(key).bind(name);
  if (inner) {
    query.bind(*inner);
  } else {
    query.bind(noInnerName);
  }
  row.bindTo(query);
  query.run();
}

void DefaultsStore::writeInnerMap(std::string_view key, std::string_view name, const DefaultsValue& map) {
  writeEntry(key, name, std::nullopt, DefaultsValue{DefaultsValue::Map{}});
  for (const auto& [inner, value] : *map.as<DefaultsValue::Map>()) writeEntry(key, name, inner, value);
}

void DefaultsStore::deleteEntries(std::string_view key) {
  Query(database_, Sql::deleteEntries).bind(key).run();
}

}  // namespace VorselKelp::posix
