#include "VorselKelpTesting/MemoryUserDefaults.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace VorselKelp::testing_platform {

using platform::DefaultsDomain;
using platform::DefaultsValue;
using platform::EntryPath;
using platform::MapKind;
using platform::TextList;

namespace {

constexpr std::size_t otherType = 4;

std::size_t index(MapKind kind) {
  return static_cast<std::size_t>(kind);
}

}  // namespace

std::size_t MemoryDefaultsDomain::typeOf(const DefaultsValue& value) {
  if (value.as<std::string>()) return index(MapKind::textMap);
  if (value.as<double>()) return index(MapKind::realMap);
  if (value.as<TextList>()) return index(MapKind::listMap);
  const auto* inner = value.as<DefaultsValue::Map>();
  const auto isText = [](const auto& entry) { return entry.second.template as<std::string>() != nullptr; };
  return inner && std::ranges::all_of(*inner, isText) ? index(MapKind::textMapMap) : otherType;
}

MemoryDefaultsDomain::CountedMap MemoryDefaultsDomain::counted(DefaultsValue::Map entries) {
  CountedMap map;
  for (const auto& [entry, value] : entries) ++map.counts[typeOf(value)];
  map.entries = std::move(entries);
  return map;
}

DefaultsValue MemoryDefaultsDomain::plain(const Stored& stored) {
  if (const auto* map = std::get_if<CountedMap>(&stored)) return DefaultsValue{map->entries};
  return std::get<DefaultsValue>(stored);
}

void MemoryDefaultsDomain::put(CountedMap& map, std::string_view entry, DefaultsValue value) {
  if (const auto found = map.entries.find(entry); found != map.entries.end()) {
    --map.counts[typeOf(found->second)];
    map.entries.erase(found);
  }
  ++map.counts[typeOf(value)];
  map.entries.emplace(entry, std::move(value));
}

MemoryDefaultsDomain::CountedMap* MemoryDefaultsDomain::mapOfKind(std::string_view key, MapKind kind) {
  const auto found = values_.find(key);
  if (found == values_.end()) return nullptr;
  auto* map = std::get_if<CountedMap>(&found->second);
  return map && map->counts[index(kind)] == map->entries.size() ? map : nullptr;
}

std::optional<DefaultsValue> MemoryDefaultsDomain::object(std::string_view key) {
  const std::lock_guard lock(mutex_);
  const auto found = values_.find(key);
  return found == values_.end() ? std::nullopt : std::optional(plain(found->second));
}

void MemoryDefaultsDomain::setObject(std::string_view key, DefaultsValue value) {
  const std::lock_guard lock(mutex_);
  if (dropWrites_) return;
  auto* entries = std::get_if<DefaultsValue::Map>(&value.value);
  Stored stored = entries ? Stored(counted(std::move(*entries))) : Stored(std::move(value));
  values_.insert_or_assign(std::string(key), std::move(stored));
}

void MemoryDefaultsDomain::removeObject(std::string_view key) {
  const std::lock_guard lock(mutex_);
  if (dropWrites_) return;
  if (const auto found = values_.find(key); found != values_.end()) values_.erase(found);
}

std::optional<DefaultsValue> MemoryDefaultsDomain::mapEntry(std::string_view key, EntryPath path,
                                                            MapKind kind) {
  const std::lock_guard lock(mutex_);
  const auto* map = mapOfKind(key, kind);
  if (!map) return std::nullopt;
  const auto found = map->entries.find(path.entry);
  if (found == map->entries.end()) return std::nullopt;
  if (kind != MapKind::textMapMap || path.inner.empty()) return found->second;
  const auto* inner = found->second.as<DefaultsValue::Map>();
  const auto innerFound = inner->find(path.inner);
  return innerFound == inner->end() ? std::nullopt : std::optional(innerFound->second);
}

void MemoryDefaultsDomain::setMapEntry(std::string_view key, EntryPath path, MapKind kind,
                                       DefaultsValue value) {
  const std::lock_guard lock(mutex_);
  const MapKind entryKind = kind == MapKind::textMapMap ? MapKind::textMap : kind;
  if (typeOf(value) != index(entryKind)) {
    std::fputs("An entry of another type than its map's was not stored.\n", stderr);
    return;
  }
  if (dropWrites_) return;
  auto* map = mapOfKind(key, kind);
  if (!map) {
    const auto placed = values_.insert_or_assign(std::string(key), Stored(CountedMap{})).first;
    map = std::get_if<CountedMap>(&placed->second);
  }
  if (kind != MapKind::textMapMap) return put(*map, path.entry, std::move(value));
  if (!map->entries.contains(path.entry)) put(*map, path.entry, DefaultsValue{DefaultsValue::Map{}});
  auto& inner = std::get<DefaultsValue::Map>(map->entries.find(path.entry)->second.value);
  inner.insert_or_assign(std::string(path.inner), std::move(value));
}

void MemoryDefaultsDomain::removeMapEntry(std::string_view key, EntryPath path, MapKind kind) {
  const std::lock_guard lock(mutex_);
  auto* map = dropWrites_ ? nullptr : mapOfKind(key, kind);
  if (!map) return;
  const auto found = map->entries.find(path.entry);
  if (found == map->entries.end()) return;
  if (kind == MapKind::textMapMap && !path.inner.empty()) {
    auto& inner = std::get<DefaultsValue::Map>(found->second.value);
    if (const auto innerFound = inner.find(path.inner); innerFound != inner.end()) inner.erase(innerFound);
    return;
  }
  --map->counts[index(kind)];
  map->entries.erase(found);
}

bool MemoryDefaultsDomain::transact(platform::FunctionRef<void()> work) {
  const std::lock_guard lock(mutex_);
  work();
  return !dropWrites_;
}

void MemoryDefaultsDomain::synchronize() {
  const std::lock_guard lock(mutex_);
  ++synchronizations_;
}

void MemoryDefaultsDomain::dropWrites(bool drop) {
  const std::lock_guard lock(mutex_);
  dropWrites_ = drop;
}

std::size_t MemoryDefaultsDomain::synchronizations() const {
  const std::lock_guard lock(mutex_);
  return synchronizations_;
}

DefaultsValue::Map MemoryDefaultsDomain::contents() const {
  const std::lock_guard lock(mutex_);
  DefaultsValue::Map all;
  for (const auto& [key, stored] : values_) all.emplace(key, plain(stored));
  return all;
}

void MemoryGroupStores::add(std::string_view group) {
  const std::lock_guard lock(mutex_);
  stores_.try_emplace(std::string(group), std::make_shared<MemoryDefaultsDomain>());
}

std::shared_ptr<MemoryDefaultsDomain> MemoryGroupStores::find(std::string_view group) const {
  const std::lock_guard lock(mutex_);
  const auto found = stores_.find(group);
  return found == stores_.end() ? nullptr : found->second;
}

void MemoryGroupStores::refuse(std::string_view group) {
  const std::lock_guard lock(mutex_);
  refused_.emplace(group);
}

bool MemoryGroupStores::refuses(std::string_view group) const {
  const std::lock_guard lock(mutex_);
  return refused_.contains(group);
}

MemoryUserDefaults::MemoryUserDefaults(std::shared_ptr<MemoryDefaultsDomain> standard,
                                       std::shared_ptr<MemoryGroupStores> groups)
    : standard_(std::move(standard)), groups_(std::move(groups)) {}

std::shared_ptr<DefaultsDomain> MemoryUserDefaults::suite(std::string_view name) {
  if (groups_->refuses(name)) {
    std::fputs("The store of this group is refused, as the test asked.\n", stderr);
    return nullptr;
  }
  auto found = groups_->find(name);
  return found ? std::move(found) : standard_;
}

}  // namespace VorselKelp::testing_platform
