#include "VorselKelp/PayloadLint.h"

#include <algorithm>
#include <utility>

#include "VorselKelp/JSONText.h"
#include "VorselKelp/RemoteKind.h"
#include "base/Text.h"
#include "core/StorageKeys.h"
#include "json/Outline.h"
#include "push/AdministrativePush.h"
#include "push/DeliveryPlan.h"
#include "push/PayloadDecoder.h"
#include "push/lint/Carousel.h"
#include "push/lint/Delivery.h"
#include "push/lint/Keys.h"
#include "push/lint/Silent.h"

namespace VorselKelp {
namespace {

// Bytes. A desktop's are encrypted, in a message that is as large as a phone's.
constexpr std::size_t largestPush = 4096;
constexpr std::size_t largestForDesktops = 3993;

PayloadLint::Shown asItCame(const platform::NotificationContent& original) {
  PayloadLint::Shown shown;
  shown.title = original.title;
  shown.subtitle = original.subtitle;
  shown.body = original.body;
  shown.sound = original.sound;
  shown.badge = original.badge;
  shown.category = original.categoryIdentifier;
  return shown;
}

void stopPreparing(PayloadLint& lint, const std::string& why) {
  lint.stops.push_back({PayloadLint::Stop::When::preparing, 0, why + "; it stops the service extension"});
}

void warnOfSize(PayloadLint& lint, std::size_t bytes) {
  if (bytes <= largestForDesktops) return;
  const auto most = bytes > largestPush ? "push services take at most " + std::to_string(largestPush)
                                        : "desktops get at most " + std::to_string(largestForDesktops);
  lint.warnings.push_back("the payload has " + std::to_string(bytes) + " bytes; " + most);
}

/// The system shows a carousel only with the category that the content extension is registered for.
void warnOfCategory(PayloadLint& lint, const Payload& payload) {
  const auto isCategory = [](const auto& item) { return item.key == keyText(StorageKey::category); };
  const auto* aps = payload.root().if_contains("aps");
  const auto* members = aps ? aps->if_object() : nullptr;
  if (!lint.carousel) return;
  if (std::ranges::any_of(lint.stored, isCategory)) {
    lint.warnings.push_back("aps.alert.n: its category, that of its buttons, is not the one of a carousel");
  } else if (!members || !members->contains("category")) {
    lint.warnings.push_back(
        "aps.category: missing; a carousel is shown with its content extension's category");
  }
}

/// Why bytes are no payload at all.
void tellUnreadable(PayloadLint& lint, std::string_view json, const std::string& why) {
  if (const auto place = json::placeBeyond(json, json::deepestLevel)) {
    lint.errors.push_back(*place + ": nested too deep; lists and objects have at most 64 levels");
  } else {
    const auto text = readJSONText(json);
    lint.errors.push_back((text ? why : "no JSON: " + text.error().description) +
                          "; a payload looks like {\"aps\": {\"alert\": ...}}");
  }
  stopPreparing(lint, "the payload is no JSON object");
}

void lintPush(PayloadLint& lint, PushObj push, const std::string& identifier) {
  lint.root = PayloadLint::Root::push;
  const NotificationBody body = push.aps.notificationBody;
  const DeliveryPlan plan = planDelivery(std::move(push), identifier);
  if (lint.prepared) tellDelivery(lint, plan);
  warnOfPush(lint, body, plan);
}

void lintRoots(PayloadLint& lint, const Payload& payload, const std::string& identifier) {
  auto push = payload.pushObj();
  if (push) return lintPush(lint, *std::move(push), identifier);
  const auto campaign = payload.campaign();
  if (campaign) {
    lint.root = PayloadLint::Root::campaign;
    if (lint.prepared) stopPreparing(lint, "aps.mutable-content: 1 for a campaign");
    return;
  }
  lint.errors.push_back("as a push: " + push.error().description +
                        R"(; a push looks like {"aps": {"alert": {"title": "...", "n": {...}}}})");
  lint.errors.push_back("as a campaign: " + campaign.error().description +
                        R"(; a campaign looks like {"isMultiple": true, "p": [{"o": {...}}]})");
  if (lint.prepared) stopPreparing(lint, "the payload is neither push nor campaign");
}

/// A push that is shown, changed or as it came.
void lintShown(PayloadLint& lint, const Payload& payload, const std::string& identifier) {
  lintRoots(lint, payload, identifier);
  if (lint.errors.empty() && trimmed(lint.shows.title + lint.shows.body).empty())
    lint.warnings.push_back("aps.alert: neither title nor body; systems show no such notification");
  tellTaps(lint, identifier);
  tellCarousel(lint, payload);
  warnOfCategory(lint, payload);
}

void lintAsSystemsRead(PayloadLint& lint, const Payload& payload, const platform::UserInfo& userInfo,
                       const std::string& identifier) {
  const auto decoded = JSONAny::decode(*userInfo.bytes());
  const JSONAny json = decoded ? *decoded : JSONAny();
  const RemoteKind kind = remoteKind(json);
  warnOfMark(lint.warnings, json);
  if (kind == RemoteKind::silent) return tellSilent(lint, json, administrativePush(userInfo));
  lint.prepared = kind == RemoteKind::changeable;
  lintShown(lint, payload, identifier);
}

}  // namespace

PayloadLint lintPayload(std::string_view json, const std::string& identifier,
                        const platform::NotificationContent& original) {
  PayloadLint lint;
  lint.shows = asItCame(original);
  warnOfSize(lint, json.size());
  const auto userInfo = platform::UserInfo::fromJSON(std::string(json));
  const auto payload = Payload::open(userInfo);
  if (!payload) {
    tellUnreadable(lint, json, payload.error().description);
    return lint;
  }
  for (const auto& path : json::duplicateKeys(json))
    lint.warnings.push_back(path + ": stands there more than once; the last one counts");
  warnOfUnknownKeys(lint.warnings, payload->root());
  lintAsSystemsRead(lint, *payload, userInfo, identifier);
  return lint;
}

}  // namespace VorselKelp
