#include "VorselKelp/PayloadLint.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"
#include "base/Url.h"
#include "core/StorageKeys.h"
#include "net/VorselRequest.h"
#include "push/DeliveryPlan.h"
#include "push/PayloadDecoder.h"

namespace VorselKelp {
namespace {

constexpr std::size_t largestPush = 4096;  // bytes that push services take
constexpr std::size_t mostButtons = 4;     // that systems show

std::string text(StorageKey key) {
  return std::string(keyText(key));
}

/// Of two texts for one entry the last one stays; the trackers of a list stand side by side.
void store(PayloadLint& lint, StorageKey key, std::string entry, std::string value) {
  if (key != StorageKey::conversionTrackers)
    std::erase_if(lint.stored,
                  [&](const auto& item) { return item.key == keyText(key) && item.entry == entry; });
  lint.stored.push_back({text(key), std::move(entry), std::move(value)});
}

/// How to write a host that forms none because of its letters.
std::string hostHint(const std::string& url) {
  return hasForeignHost(url) ? "; write its host in ASCII (\"xn--...\")" : "";
}

/// Tells the request, where the text forms one.
void request(PayloadLint& lint, const std::string& url) {
  auto parsed = parseUrl(url);
  if (parsed && parsed->isWeb()) lint.requests.push_back(std::move(parsed->text));
}

void warnOfTracker(PayloadLint& lint, const std::string& where, const std::string& url) {
  const auto parsed = parseUrl(url);
  if (!parsed || !parsed->isWeb()) {
    lint.warnings.push_back(where + ": \"" + url + "\" is no web address and is never requested" +
                            hostHint(url));
  } else if (lowerCased(parsed->scheme) == "http") {
    lint.warnings.push_back(where + ": \"" + url + "\" is not encrypted; systems refuse http addresses");
  }
}

void warnOfTrackers(PayloadLint& lint, const std::string& where,
                    const std::optional<std::vector<std::string>>& urls) {
  if (!urls) return;
  for (std::size_t i = 0; i < urls->size(); ++i)
    warnOfTracker(lint, where + "[" + std::to_string(i) + "]", (*urls)[i]);
}

/// Whether the system hands a payload to the service extension at all.
bool isMutable(const Payload& payload) {
  const auto* aps = payload.root().if_contains("aps");
  const auto* flag = aps && aps->is_object() ? aps->get_object().if_contains("mutable-content") : nullptr;
  return flag && flag->is_number() && flag->to_number<double>() == 1;
}

void warnOfMessage(PayloadLint& lint, const std::string& where, const N& n) {
  if (n.image && !isWebUrl(*n.image))
    lint.warnings.push_back(where + ".image: \"" + *n.image +
                            "\" is no web address; the picture is left out" + hostHint(*n.image));
  if ((n.image || n.actions) && n.cl.value_or(0) != 0)
    lint.warnings.push_back(where + ".cl: the picture and the buttons are left out");
  if (n.actions && n.actions->size() > mostButtons)
    lint.warnings.push_back(where + ".actions: more than four buttons; the system shows four");
  if (n.data) warnOfTrackers(lint, where + ".data.t", n.data->t);
}

void warnOfPush(PayloadLint& lint, const PushObj& push) {
  const NotificationBody& body = push.aps.notificationBody;
  if (push.aps.mutableContent != 1)
    lint.warnings.push_back("aps.mutable-content: not 1; the service extension never sees this push");
  if (body.v) warnOfTracker(lint, "aps.alert.v", *body.v);
  warnOfTrackers(lint, "aps.alert.t", body.t);
  if (body.n) {
    warnOfMessage(lint, "aps.alert.n", *body.n);
  } else if (!body.e) {
    lint.warnings.push_back(
        "aps.alert: neither n nor e; the original is shown when the extension's time is over");
  } else if (!isWebUrl(*body.e)) {
    lint.warnings.push_back("aps.alert.e: \"" + *body.e + "\" is no web address; no ad is fetched" +
                            hostHint(*body.e));
  }
}

void tellMessage(PayloadLint& lint, const std::string& identifier, const DeliveryPlan::Message& message) {
  PayloadLint::Shown shown;
  shown.title = message.title;
  shown.body = message.body;
  shown.sound = message.sound;
  if (message.image && isWebUrl(*message.image)) shown.image = message.image;
  if (message.category) {
    shown.category = categoryIdentifier(identifier);
    for (const Action& action : *message.category) {
      shown.actions.push_back({action.action, action.title, optionOf(action)});
      if (action.url)
        store(lint, StorageKey::deepLinks, identifier + "/" + action.action,
              storedUrl(*action.url, action.action));
    }
    store(lint, StorageKey::category, "", *shown.category);
  }
  if (message.image) request(lint, *message.image);
  for (const std::string& tracker : message.impressionTrackers) request(lint, tracker);
  if (message.target) {
    for (const std::string& tracker : message.target->t.value_or(std::vector<std::string>{}))
      store(lint, StorageKey::conversionTrackers, identifier, tracker);
    const std::string action(platform::defaultActionIdentifier);
    store(lint, StorageKey::deepLinks, identifier + "/" + action, storedUrl(message.target->url, action));
  }
  if (message.tag) store(lint, StorageKey::tags, *message.tag, identifier);
  lint.shows = std::move(shown);
}

void tellAd(PayloadLint& lint, const DeliveryPlan::Ad& ad) {
  if (ad.interstitial) store(lint, StorageKey::adPending, "", *ad.interstitial ? "true" : "false");
  if (!ad.endpoint) return;
  store(lint, StorageKey::eventEndpoint, "", *ad.endpoint);
  const std::string url = trackingUrl(*ad.endpoint);
  request(lint, url);
  if (!parseUrl(url)) return;
  lint.shows.emplace().title = ad.title.empty() ? "No title" : ad.title;
}

void lintPush(PayloadLint& lint, PushObj push, const std::string& identifier) {
  lint.root = PayloadLint::Root::push;
  warnOfPush(lint, push);
  if (push.aps.mutableContent != 1) return;  // shown as it came
  const DeliveryPlan plan = planDelivery(std::move(push), identifier);
  if (plan.viewTracker) request(lint, *plan.viewTracker);
  if (const auto* message = std::get_if<DeliveryPlan::Message>(&plan.kind)) {
    tellMessage(lint, identifier, *message);
  } else {
    tellAd(lint, std::get<DeliveryPlan::Ad>(plan.kind));
  }
}

/// What the carousel needs of one message.
void lintCarouselMessage(PayloadLint& lint, const std::string& where, const P& message) {
  warnOfTrackers(lint, where + ".i", message.i);
  if (!parseUrl(message.o.image.value_or("")))
    lint.stops.push_back(where + ".o.image: forms no URL; the carousel stops the content extension" +
                         hostHint(message.o.image.value_or("")));
  const auto& data = message.o.data;
  if (!data || !data->t || data->t->empty() || !parseUrl(data->url))
    lint.stops.push_back(
        where + ".o.data: without a URL and a click tracker, opening it stops the content extension" +
        (data ? hostHint(data->url) : ""));
  if (data) warnOfTrackers(lint, where + ".o.data.t", data->t);
}

void lintCampaign(PayloadLint& lint, const Payload& payload, const PCampaignObject& campaign) {
  lint.root = PayloadLint::Root::campaign;
  if (isMutable(payload))
    lint.stops.push_back("a campaign with \"mutable-content\" 1 stops the service extension");
  if (campaign.p.empty())
    lint.stops.push_back("p: without messages the carousel stops the content extension");
  const auto* isMultiple = payload.root().if_contains("isMultiple");
  if (!isMultiple || !isMultiple->is_bool())
    lint.stops.push_back("isMultiple: no boolean; the carousel stops the content extension");
  warnOfTrackers(lint, "t", campaign.t);
  for (std::size_t i = 0; i < campaign.p.size(); ++i)
    lintCarouselMessage(lint, "p[" + std::to_string(i) + "]", campaign.p[i]);
}

}  // namespace

PayloadLint lintPayload(std::string_view json, const std::string& identifier) {
  PayloadLint lint;
  if (json.size() > largestPush)
    lint.warnings.push_back("the payload has " + std::to_string(json.size()) +
                            " bytes; push services take at most 4096");
  const auto payload = Payload::open(platform::UserInfo::fromJSON(std::string(json)));
  if (!payload) {
    lint.errors.push_back(payload.error().description);
    lint.stops.push_back("what is no JSON object stops the service extension");
    return lint;
  }
  auto push = payload->pushObj();
  if (push) {
    lintPush(lint, *std::move(push), identifier);
    return lint;
  }
  const auto campaign = payload->campaign();
  if (campaign) {
    lintCampaign(lint, *payload, *campaign);
    return lint;
  }
  lint.errors = {push.error().description, campaign.error().description};
  if (isMutable(*payload)) lint.stops.push_back("a payload of neither form stops the service extension");
  return lint;
}

}  // namespace VorselKelp
