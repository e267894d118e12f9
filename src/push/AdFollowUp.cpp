#include "push/AdFollowUp.h"

#include "ads/AdRecords.h"

namespace VorselKelp {

void followUpAd(CoreContext& context, VorselRequest& requests) {
  if (!context.storage.flag(StorageKey::adPending)) return;
  if (const auto endpoint = context.storage.text(StorageKey::eventEndpoint))
    requests.sendTrackingGet<AdexObject>(
        *endpoint, [](const std::optional<AdexObject>&, const std::optional<Error>&) {});
}

bool adFollows(std::string_view action) {
  return action == "yes" || action == platform::defaultActionIdentifier;
}

}  // namespace VorselKelp
