#include "push/AdministrativePush.h"

#include <tuple>
#include <type_traits>
#include <utility>

#include "push/PayloadDecoder.h"
#include "push/PushTables.h"

namespace VorselKelp {
namespace {

const boost::json::object* objectAt(const boost::json::object& parent, std::string_view key) {
  const auto* value = parent.if_contains(key);
  return value ? value->if_object() : nullptr;
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
std::optional<std::vector<Record>> records(const boost::json::object& alert, std::string_view key) {
  const auto* value = alert.if_contains(key);
  const auto* list = value ? value->if_array() : nullptr;
  if (!list) return std::nullopt;
  std::vector<Record> records;
  for (const auto& element : *list) {
    const auto* entry = element.if_object();
    if (!entry) return std::nullopt;
    if (auto record = recordFrom<Record>(*entry)) records.push_back(*std::move(record));
  }
  return records;
}

}  // namespace

void readAdministrativePush(
    CoreContext& context, const platform::UserInfo& userInfo,
    const std::function<void(std::optional<Geofences>, std::optional<Beacons>)>& completion) {
  if (!context.storage.flag(StorageKey::push)) return;
  const auto payload = Payload::open(userInfo);
  if (!payload) return;
  const auto* aps = objectAt(payload->root(), "aps");
  const auto* alert = aps ? objectAt(*aps, "alert") : nullptr;
  if (!alert) return;
  if (auto geofences = records<Gl>(*alert, "gl")) {
    completion(Geofences{*std::move(geofences)}, std::nullopt);
  } else if (auto beacons = records<B>(*alert, "bl")) {
    completion(std::nullopt, Beacons{*std::move(beacons)});
  }
}

}  // namespace VorselKelp
