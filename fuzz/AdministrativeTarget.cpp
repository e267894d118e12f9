// Administrative pushes: geofences or beacons are handed over once, whole or not at all.

#include <algorithm>
#include <optional>

#include "VorselKelp/JSONAny.h"
#include "json/Decoder.h"
#include "json/Encoder.h"
#include "push/PushTables.h"
#include "support/Expect.h"
#include "support/Input.h"
#include "support/Process.h"
#include "support/Stop.h"

namespace {

using namespace VorselKelp;

struct Answer {
  int calls = 0;
  std::optional<Geofences> geofences;
  std::optional<Beacons> beacons;
  friend bool operator==(const Answer& a, const Answer& b) {
    return a.calls == b.calls && a.geofences.has_value() == b.geofences.has_value() &&
           (!a.geofences || a.geofences->gl == b.geofences->gl) &&
           a.beacons.has_value() == b.beacons.has_value() && (!a.beacons || a.beacons->bl == b.beacons->bl);
  }
};

Answer read(const platform::UserInfo& userInfo) {
  Answer answer;
  VorselKellp::didReciveAdministrativeNotificationWith(userInfo, [&](auto geofences, auto beacons) {
    ++answer.calls;
    answer.geofences = std::move(geofences);
    answer.beacons = std::move(beacons);
  });
  return answer;
}

const JSONAny::List* listIn(const JSONAny& payload, const char* key) {
  const auto* aps = payload.find("aps");
  const auto* alert = aps ? aps->find("alert") : nullptr;
  const auto* list = alert ? alert->find(key) : nullptr;
  return list ? list->as<JSONAny::List>() : nullptr;
}

/// What was read is written as it was read, and no more came out than went in.
template <class Record>
void checkRecords(const std::vector<Record>& records, const JSONAny& payload, const char* key) {
  const auto* list = listIn(payload, key);
  FUZZ_EXPECT(list && records.size() <= list->size());
  for (const Record& record : records) {
    const auto text = json::encode(record);
    FUZZ_EXPECT(text);
    const auto again = json::decode<Record>(std::string_view(*text));
    FUZZ_EXPECT(again && *again == record);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string payload = fuzz::Input(data, size).all();
  const auto device = fuzz::makeDevice();
  const fuzz::Process application(device);
  const auto bytes = platform::UserInfo::fromJSON(payload);
  FUZZ_EXPECT(read(bytes).calls == 0);  // push is off
  fuzz::storeOf(*device).setObject("vs_push", {true});

  const auto answer = read(bytes);
  FUZZ_EXPECT(answer.calls == 0 ||
              (answer.calls == 1 && answer.geofences.has_value() != answer.beacons.has_value()));
  const auto any = JSONAny::decode(payload);
  FUZZ_EXPECT(any || answer.calls == 0);
  if (answer.geofences) checkRecords(answer.geofences->gl, *any, "gl");
  if (answer.beacons) checkRecords(answer.beacons->bl, *any, "bl");
  if (any && any->as<JSONAny::Dictionary>())
    FUZZ_EXPECT(read(platform::UserInfo(*any->as<JSONAny::Dictionary>())) == answer);
  return 0;
}
