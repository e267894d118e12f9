#include "core/StorageManager.h"

#include "base/Date.h"
#include "core/CoreState.h"

namespace VorselKelp {
namespace {

using platform::DefaultsValue;
using platform::MapKind;

/// A map with one entry of another type is absent as a whole.
template <class T>
std::optional<std::map<std::string, T>> toMap(const std::optional<DefaultsValue>& value) {
  const auto* map = value ? value->as<DefaultsValue::Map>() : nullptr;
  if (!map) return std::nullopt;
  std::map<std::string, T> typed;
  for (const auto& [key, entry] : *map) {
    const T* wanted = entry.template as<T>();
    if (!wanted) return std::nullopt;
    typed.emplace_hint(typed.end(), key, *wanted);
  }
  return typed;
}

}  // namespace

StorageManager::StorageManager(const platform::Platform& services, const CoreState& coreState)
    : services_(services), coreState_(coreState) {}

platform::DefaultsDomain* StorageManager::domain() {
  std::call_once(opened_, [this] {
    suiteName_ = coreState_.appGroupSetting();
    defaultStorage_ = services_.userDefaults->suite(suiteName_);
  });
  return defaultStorage_.get();
}

bool StorageManager::available() {
  return domain() != nullptr;
}

const std::string& StorageManager::suiteName() {
  domain();
  return suiteName_;
}

template <class T>
std::optional<T> StorageManager::typed(StorageKey key) {
  auto* store = domain();
  if (!store) return std::nullopt;
  const auto object = store->object(keyText(key));
  const T* value = object ? object->as<T>() : nullptr;
  return value ? std::optional<T>(*value) : std::nullopt;
}

std::optional<bool> StorageManager::boolean(StorageKey key) {
  return typed<bool>(key);
}
bool StorageManager::flag(StorageKey key) {
  return boolean(key).value_or(false);
}
std::optional<std::int64_t> StorageManager::integer(StorageKey key) {
  return typed<std::int64_t>(key);
}
std::optional<double> StorageManager::real(StorageKey key) {
  return typed<double>(key);
}
std::optional<std::string> StorageManager::text(StorageKey key) {
  return typed<std::string>(key);
}

std::optional<StorageManager::TextMap> StorageManager::textMap(StorageKey key) {
  auto* store = domain();
  return store ? toMap<std::string>(store->object(keyText(key))) : std::nullopt;
}

std::optional<StorageManager::RealMap> StorageManager::realMap(StorageKey key) {
  auto* store = domain();
  return store ? toMap<double>(store->object(keyText(key))) : std::nullopt;
}

std::optional<platform::TextList> StorageManager::conversionTrackers(const std::string& notification) {
  return listEntry(StorageKey::conversionTrackers, notification);
}

std::optional<StorageManager::TextMap> StorageManager::deepLinks(const std::string& notification) {
  auto* store = domain();
  if (!store) return std::nullopt;
  return toMap<std::string>(
      store->mapEntry(keyText(StorageKey::deepLinks), {notification}, MapKind::textMapMap));
}

double StorageManager::appOpenSavedAt() {
  const auto saved = real(StorageKey::appOpenSavedAt);
  return saved ? *saved : services_.clock->now();
}

void StorageManager::set(StorageKey key, bool value) {
  if (auto* store = domain()) store->setObject(keyText(key), {value});
}
void StorageManager::set(StorageKey key, std::int64_t value) {
  if (auto* store = domain()) store->setObject(keyText(key), {value});
}
void StorageManager::set(StorageKey key, double value) {
  if (auto* store = domain()) store->setObject(keyText(key), {value});
}
void StorageManager::set(StorageKey key, std::string value) {
  if (auto* store = domain()) store->setObject(keyText(key), {std::move(value)});
}
void StorageManager::set(StorageKey key, TextList value) {
  if (auto* store = domain()) store->setObject(keyText(key), {std::move(value)});
}
void StorageManager::remove(StorageKey key) {
  if (auto* store = domain()) store->removeObject(keyText(key));
}

void StorageManager::set(StorageKey key, platform::DefaultsValue::Map value) {
  if (auto* store = domain()) store->setObject(keyText(key), {std::move(value)});
}

template <class T>
std::optional<T> StorageManager::typedEntry(StorageKey key, const std::string& entry,
                                            platform::MapKind kind) {
  auto* store = domain();
  const auto stored = store ? store->mapEntry(keyText(key), {entry}, kind) : std::nullopt;
  const T* value = stored ? stored->as<T>() : nullptr;
  return value ? std::optional<T>(*value) : std::nullopt;
}

std::optional<std::string> StorageManager::textEntry(StorageKey key, const std::string& entry) {
  return typedEntry<std::string>(key, entry, MapKind::textMap);
}

std::optional<platform::TextList> StorageManager::listEntry(StorageKey key, const std::string& entry) {
  return typedEntry<TextList>(key, entry, MapKind::listMap);
}

void StorageManager::setListEntry(StorageKey key, const std::string& entry, TextList value) {
  if (auto* store = domain()) store->setMapEntry(keyText(key), {entry}, MapKind::listMap, {std::move(value)});
}

void StorageManager::removeTextEntry(StorageKey key, const std::string& entry) {
  if (auto* store = domain()) store->removeMapEntry(keyText(key), {entry}, MapKind::textMap);
}

void StorageManager::setTextEntry(StorageKey key, const std::string& entry, std::string value) {
  if (auto* store = domain()) store->setMapEntry(keyText(key), {entry}, MapKind::textMap, {std::move(value)});
}

void StorageManager::setConversionTrackers(const std::string& notification, TextList trackers) {
  setListEntry(StorageKey::conversionTrackers, notification, std::move(trackers));
}

void StorageManager::removeConversionTrackers(const std::string& notification) {
  if (auto* store = domain())
    store->removeMapEntry(keyText(StorageKey::conversionTrackers), {notification}, MapKind::listMap);
}

void StorageManager::setDeepLink(const std::string& notification, const std::string& action,
                                 std::string url) {
  if (auto* store = domain())
    store->setMapEntry(keyText(StorageKey::deepLinks), {notification, action}, MapKind::textMapMap,
                       {std::move(url)});
}

void StorageManager::removeDeepLinks(const std::string& notification) {
  if (auto* store = domain())
    store->removeMapEntry(keyText(StorageKey::deepLinks), {notification}, MapKind::textMapMap);
}

void StorageManager::synchronize() {
  if (auto* store = domain()) store->synchronize();
}

bool StorageManager::transact(platform::FunctionRef<void()> work) {
  if (auto* store = domain()) return store->transact(work);
  work();
  return false;
}

std::string StorageManager::formatDate(double secondsSince1970) const {
  return httpDateText(secondsSince1970);
}

}  // namespace VorselKelp
