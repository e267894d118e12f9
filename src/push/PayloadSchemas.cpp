#include "VorselKelp/PayloadLint.h"
#include "ads/AdRecords.h"
#include "json/Schema.h"
#include "net/ActivityRecords.h"
#include "net/RemoteConfigurationRecords.h"
#include "push/PushTables.h"

namespace VorselKelp {

std::optional<std::string> payloadSchema(std::string_view name) {
  if (name == "push") return json::schema<PushObj>("push");
  if (name == "campaign") return json::schema<PCampaignObject>("campaign");
  if (name == "activity") return json::schema<ActivityBody>("activity");
  if (name == "users") return json::schema<PushBody>("users");
  if (name == "configuration") return json::schema<Config>("configuration");
  if (name == "ad") return json::schema<AdexObject>("ad");
  return std::nullopt;
}

}  // namespace VorselKelp
