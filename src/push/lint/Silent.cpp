#include "push/lint/Silent.h"

#include <cstddef>
#include <initializer_list>
#include <utility>

#include "VorselKelp/RemoteKind.h"

namespace VorselKelp {
namespace {

const JSONAny* givenAt(const JSONAny* json, std::string_view key) {
  const auto* member = json ? json->find(key) : nullptr;
  return member && !member->as<JSONNull>() ? member : nullptr;
}

void warnOfUnread(LintLines& warnings, const JSONAny* json, const std::string& path,
                  std::initializer_list<const char*> keys) {
  for (const char* key : keys) {
    if (givenAt(json, key))
      warnings.push_back(path + key +
                         ": nobody reads it; the push is silent, its alert has no title, no body and no n");
  }
}

/// `read` is the number of entries that are handed over; absent where the list is not.
void warnOfList(LintLines& warnings, const JSONAny* list, const std::string& where,
                std::optional<std::size_t> read) {
  if (!list) return;
  if (!read) {
    warnings.push_back(where + ": no list of objects; nothing of it is handed over");
  } else if (const auto all = list->as<JSONAny::List>()->size(); *read < all) {
    warnings.push_back(where + ": " + std::to_string(all - *read) + " of " + std::to_string(all) +
                       " entries are left out for want of a required member");
  }
}

void warnOfLists(LintLines& warnings, const JSONAny* alert, const AdministrativePush& lists) {
  const auto& [geofences, beacons] = lists;
  warnOfList(warnings, givenAt(alert, "gl"), "aps.alert.gl",
             geofences ? std::optional(geofences->gl.size()) : std::nullopt);
  if (geofences && givenAt(alert, "bl")) {
    warnings.push_back("aps.alert.bl: not handed over; the geofences beside it are");
  } else {
    warnOfList(warnings, givenAt(alert, "bl"), "aps.alert.bl",
               beacons ? std::optional(beacons->bl.size()) : std::nullopt);
  }
}

}  // namespace

void tellSilent(PayloadLint& lint, const JSONAny& payload, AdministrativePush lists) {
  lint.shows = {};
  const auto* aps = givenAt(&payload, "aps");
  const auto* alert = givenAt(aps, "alert");
  warnOfUnread(lint.warnings, aps, "aps.", {"mutable-content", "sound", "badge", "category"});
  warnOfUnread(lint.warnings, alert, "aps.alert.", {"subtitle", "adex", "e", "v", "t"});
  warnOfUnread(lint.warnings, &payload, "", {"p", "isMultiple"});
  warnOfLists(lint.warnings, alert, lists);
  lint.silent = {std::move(lists.geofences), std::move(lists.beacons)};
}

void warnOfMark(LintLines& warnings, const JSONAny& payload) {
  const auto* mark = givenAt(givenAt(&payload, "aps"), "content-available");
  // By itself one that counts makes a push silent.
  const auto alone = [&] {
    return JSONAny(JSONAny::Dictionary{{"aps", JSONAny::Dictionary{{"content-available", *mark}}}});
  };
  if (mark && remoteKind(alone()) != RemoteKind::silent)
    warnings.push_back("aps.content-available: not 1; it makes no push silent");
}

}  // namespace VorselKelp
