#include "VorselKelp/PayloadLint.h"
#include "ads/AdRecords.h"
#include "json/Schema.h"
#include "net/ActivityRecords.h"
#include "net/RemoteConfigurationRecords.h"
#include "push/PushTables.h"

namespace VorselKelp {
namespace {

/// What holds for every payload beyond its tables: a carousel that any message is meant for stops without
/// what stands here. What has no message for one needs none of it.
constexpr std::string_view carouselNeeds =
    R"(,"$comment":"Lists and objects nest in 64 levels at most.",)"
    R"("if":{"not":{"properties":{"p":{"type":"null"},"isMultiple":{"type":"null"}}}},)"
    R"("then":{"required":["p","isMultiple"],"properties":{"isMultiple":{"type":"boolean"},)"
    R"("p":{"type":"array","minItems":1,"items":{"properties":{"o":{"required":["image","data"],"properties":{)"
    R"("image":{"type":"string","minLength":1},)"
    R"("data":{"type":"object","required":["t"],"properties":{"url":{"minLength":1},)"
    R"("t":{"type":"array","minItems":1}}}}}}}}}})";

}  // namespace

std::optional<std::string> payloadSchema(std::string_view name) {
  if (name == "push") return json::schema<PushObj, MultiMessagePush>("push", carouselNeeds);
  if (name == "campaign") return json::schema<PCampaignObject, MultiMessagePush>("campaign", carouselNeeds);
  if (name == "activity") return json::schema<ActivityBody>("activity");
  if (name == "users") return json::schema<PushBody>("users");
  if (name == "configuration") return json::schema<Config>("configuration");
  if (name == "ad") return json::schema<AdexObject>("ad");
  return std::nullopt;
}

}  // namespace VorselKelp
