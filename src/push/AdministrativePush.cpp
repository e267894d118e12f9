#include "push/AdministrativePush.h"

#include <utility>

#include "push/PayloadDecoder.h"
#include "push/PushTables.h"

namespace VorselKelp {
namespace {

const boost::json::object* objectAt(const boost::json::object& parent, std::string_view key) {
  const auto* value = parent.if_contains(key);
  return value ? value->if_object() : nullptr;
}

/// The list under `key` when all of its elements are objects; each that reads as a record, in order.
template <class Record>
std::optional<std::vector<Record>> records(const boost::json::object& alert, std::string_view key) {
  const auto* value = alert.if_contains(key);
  const auto* list = value ? value->if_array() : nullptr;
  if (!list) return std::nullopt;
  std::vector<Record> records;
  for (const auto& element : *list) {
    if (!element.is_object()) return std::nullopt;
    if (auto record = json::decode<Record>(element)) records.push_back(*std::move(record));
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
