#include "push/lint/Delivery.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/Url.h"
#include "core/StorageKeys.h"
#include "net/VorselRequest.h"
#include "push/AdContent.h"
#include "push/AdFollowUp.h"
#include "push/LinkTarget.h"
#include "push/lint/Links.h"

namespace VorselKelp {
namespace {

void append(std::vector<std::string>& list, std::vector<std::string> more) {
  std::ranges::move(more, std::back_inserter(list));
}

/// Of two texts for one entry the last one stays; the trackers of a list stand side by side.
void store(PayloadLint& lint, StorageKey key, std::string entry, std::string value) {
  if (key != StorageKey::conversionTrackers)
    std::erase_if(lint.stored,
                  [&](const auto& item) { return item.key == keyText(key) && item.entry == entry; });
  lint.stored.push_back({std::string(keyText(key)), std::move(entry), std::move(value)});
}

std::vector<std::string> storedTexts(const PayloadLint& lint, StorageKey key, const std::string& entry) {
  std::vector<std::string> texts;
  for (const auto& item : lint.stored) {
    if (item.key == keyText(key) && item.entry == entry) texts.push_back(item.text);
  }
  return texts;
}

void tellButtons(PayloadLint& lint, const std::string& identifier, const std::vector<Action>& actions) {
  lint.shows.category = categoryIdentifier(identifier);
  for (const Action& action : actions) {
    lint.shows.actions.push_back({action.action, action.title, optionOf(action)});
    if (action.url)
      store(lint, StorageKey::deepLinks, identifier + "/" + action.action,
            storedUrl(*action.url, action.action));
  }
  store(lint, StorageKey::category, "", lint.shows.category);
}

void tellTarget(PayloadLint& lint, const std::string& identifier, const Conversion& target) {
  for (const std::string& tracker : target.t.value_or(std::vector<std::string>{}))
    store(lint, StorageKey::conversionTrackers, identifier, tracker);
  const std::string action(platform::defaultActionIdentifier);
  store(lint, StorageKey::deepLinks, identifier + "/" + action, storedUrl(target.url, action));
}

void tellMessage(PayloadLint& lint, const std::string& identifier, const DeliveryPlan::Message& message) {
  lint.shows.title = message.title;
  lint.shows.sound = message.sound;
  if (message.body) lint.shows.body = *message.body;
  if (message.category) tellButtons(lint, identifier, *message.category);
  if (message.image) {
    lint.shows.image = webUrl(*message.image);
    append(lint.requests, webRequests({*message.image}));
  }
  append(lint.requests, webRequests(message.impressionTrackers));
  if (message.target) tellTarget(lint, identifier, *message.target);
  if (message.tag) store(lint, StorageKey::tags, *message.tag, identifier);
}

void tellAd(PayloadLint& lint, const DeliveryPlan::Ad& ad) {
  if (ad.interstitial) store(lint, StorageKey::adPending, "", *ad.interstitial ? "true" : "false");
  if (!ad.endpoint) return;
  store(lint, StorageKey::eventEndpoint, "", *ad.endpoint);
  const std::string url = trackingUrl(*ad.endpoint);
  append(lint.requests, webRequests({url}));
  if (!parseUrl(url)) return;  // nothing answers, and the original is shown
  lint.shows.title = adTitle(std::nullopt, ad.title);
  lint.shows.ad = isWebUrl(url);
}

PayloadLint::Tap::Opens opens(LinkTarget::Kind kind) {
  switch (kind) {
    case LinkTarget::Kind::browser:
      return PayloadLint::Tap::Opens::browser;
    case LinkTarget::Kind::deepLink:
      return PayloadLint::Tap::Opens::deepLink;
    case LinkTarget::Kind::nothing:
      break;
  }
  return PayloadLint::Tap::Opens::nothing;
}

}  // namespace

void tellDelivery(PayloadLint& lint, const DeliveryPlan& plan) {
  if (plan.viewTracker) append(lint.requests, webRequests({*plan.viewTracker}));
  if (const auto* message = std::get_if<DeliveryPlan::Message>(&plan.kind)) {
    tellMessage(lint, plan.identifier, *message);
  } else {
    tellAd(lint, std::get<DeliveryPlan::Ad>(plan.kind));
  }
}

void tellTaps(PayloadLint& lint, const std::string& identifier) {
  std::vector<std::string> actions = {std::string(platform::defaultActionIdentifier)};
  for (const auto& button : lint.shows.actions) actions.push_back(button.identifier);
  const auto trackers = webRequests(storedTexts(lint, StorageKey::conversionTrackers, identifier));
  for (auto& action : actions) {
    PayloadLint::Tap tap;
    for (const auto& link : storedTexts(lint, StorageKey::deepLinks, identifier + "/" + action)) {
      auto target = linkTarget(link);
      tap.opens = opens(target.kind);
      tap.url = std::move(target.url);
    }
    tap.requests = trackers;
    if (adFollows(action)) append(tap.requests, adFollowUpRequests(lint));
    tap.action = std::move(action);
    lint.taps.push_back(std::move(tap));
  }
}

std::vector<std::string> adFollowUpRequests(const PayloadLint& lint) {
  if (storedTexts(lint, StorageKey::adPending, "") != std::vector<std::string>{"true"}) return {};
  const auto endpoint = storedTexts(lint, StorageKey::eventEndpoint, "");
  return endpoint.empty() ? endpoint : webRequests({trackingUrl(endpoint.front())});
}

}  // namespace VorselKelp
