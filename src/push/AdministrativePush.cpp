#include "push/AdministrativePush.h"

#include <algorithm>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include "json/Decoder.h"
#include "push/PushTables.h"

namespace VorselKelp {
namespace {

template <class T>
const T* memberOf(const JSONAny::Dictionary& dictionary, std::string_view key) {
  const auto found = std::ranges::find(dictionary, key, &JSONAny::Member::key);
  return found == dictionary.end() ? nullptr : found->value.as<T>();
}

/// A member that may be missing and is of another type counts as missing.
template <class Record>
std::optional<Record> recordFrom(const boost::json::object& entry) {
  Record record{};
  json::Failure failure;
  const auto read = [&](const auto& key) {
    auto& member = record.*key.member;
    if (json::decodeKey(entry, key, record, {}, failure)) return true;
    member = {};
    return json::mayBeMissing<std::remove_reference_t<decltype(member)>>;
  };
  const bool whole =
      std::apply([&](const auto&... keys) { return (read(keys) && ...); }, json::KeyTable<Record>::keys);
  return whole ? std::optional(std::move(record)) : std::nullopt;
}

/// The list under `key` when all of its elements are objects; each that reads as a record, in order.
template <class Record>
std::optional<std::vector<Record>> records(const JSONAny::Dictionary& alert, std::string_view key) {
  const auto* list = memberOf<JSONAny::List>(alert, key);
  if (!list) return std::nullopt;
  std::vector<Record> records;
  for (const auto& element : *list) {
    if (!element.as<JSONAny::Dictionary>()) return std::nullopt;
    const auto text = element.encode();
    const auto entry = text ? json::Document::parse(*text) : Result<json::Document>(text.error());
    if (!entry) continue;
    if (auto record = recordFrom<Record>(entry->root().get_object())) records.push_back(*std::move(record));
  }
  return records;
}

/// The user information as a dictionary; what stands beside the lists may have no JSON form.
JSONAny::Dictionary dictionaryOf(const platform::UserInfo& userInfo) {
  if (userInfo.dictionary()) return *userInfo.dictionary();
  auto root = JSONAny::decode(userInfo.bytes() ? *userInfo.bytes() : std::string());
  auto* members = root ? std::get_if<JSONAny::Dictionary>(&root->value) : nullptr;
  return members ? std::move(*members) : JSONAny::Dictionary{};
}

}  // namespace

AdministrativePush administrativePush(const platform::UserInfo& userInfo) {
  const auto root = dictionaryOf(userInfo);
  const auto* aps = memberOf<JSONAny::Dictionary>(root, "aps");
  const auto* alert = aps ? memberOf<JSONAny::Dictionary>(*aps, "alert") : nullptr;
  if (!alert) return {};
  if (auto geofences = records<Gl>(*alert, "gl")) return {Geofences{*std::move(geofences)}, std::nullopt};
  if (auto beacons = records<B>(*alert, "bl")) return {std::nullopt, Beacons{*std::move(beacons)}};
  return {};
}

void readAdministrativePush(
    CoreContext& context, const platform::UserInfo& userInfo,
    const std::function<void(std::optional<Geofences>, std::optional<Beacons>)>& completion) {
  if (!context.storage.flag(StorageKey::push)) return;
  auto push = administrativePush(userInfo);
  if (push.geofences || push.beacons) completion(std::move(push.geofences), std::move(push.beacons));
}

}  // namespace VorselKelp
