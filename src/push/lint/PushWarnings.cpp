#include "base/Url.h"
#include "net/VorselRequest.h"
#include "push/lint/Delivery.h"
#include "push/lint/Links.h"
#include "push/lint/Texts.h"

namespace VorselKelp {
namespace {

constexpr const char* alertPath = "aps.alert";
constexpr const char* messagePath = "aps.alert.n";

void warnOfMessage(LintLines& warnings, const N& n) {
  const std::string where = messagePath;
  if (n.body) warnOfPlainText(warnings, where + ".body", *n.body);
  if (n.sound && !n.silent.value_or(false)) warnOfSound(warnings, where + ".sound", *n.sound);
  if (n.badge) warnings.push_back(where + ".badge: changes no badge; the icon's number is aps.badge");
  if (n.image) warnOfPicture(warnings, where + ".image", *n.image);
  if ((n.image || n.actions) && n.cl.value_or(0) != 0)
    warnings.push_back(where + ".cl: not 0; the picture and the buttons are left out");
  if (n.data) {
    warnOfLink(warnings, where + ".data.url", n.data->url);
    warnOfTrackers(warnings, where + ".data.t", n.data->t);
  }
}

void warnOfActions(LintLines& warnings, const std::vector<Action>& actions) {
  const std::string where = std::string(messagePath) + ".actions";
  warnOfButtons(warnings, where, actions);
  for (std::size_t i = 0; i < actions.size(); ++i) {
    if (actions[i].url) warnOfLink(warnings, where + "[" + std::to_string(i) + "].url", *actions[i].url);
  }
}

void warnOfAd(LintLines& warnings, const DeliveryPlan::Ad& ad) {
  const std::string where = alertPath;
  if (!ad.endpoint) {
    warnings.push_back(where + ": neither n nor e; the original is shown when the extension's time is over");
  } else if (!parseUrl(trackingUrl(*ad.endpoint))) {
    warnings.push_back(where + ".e: \"" + *ad.endpoint +
                       "\" forms no URL; the original is shown when the extension's time is over" +
                       hostHint(*ad.endpoint));
  } else if (!isWebUrl(*ad.endpoint)) {
    warnings.push_back(where + ".e: \"" + *ad.endpoint + "\" is no web address; no ad is fetched");
  }
}

}  // namespace

void warnOfPush(PayloadLint& lint, const NotificationBody& body, const DeliveryPlan& plan) {
  const std::string where = alertPath;
  const auto* message = std::get_if<DeliveryPlan::Message>(&plan.kind);
  const auto* ad = std::get_if<DeliveryPlan::Ad>(&plan.kind);
  if (!lint.prepared) {
    // Without a message, an ad or a tracker it is an ordinary alert, and nobody expects more of it.
    if (!message && !ad->endpoint && !ad->interstitial && !body.v && !body.t) return;
    lint.warnings.push_back("aps.mutable-content: not 1; the service extension never sees this push");
  }
  warnOfTitle(lint.warnings, where + ".title", body.title, message ? message->title : ad->title);
  if (body.v) warnOfTracker(lint.warnings, where + ".v", *body.v);
  if (ad) return warnOfAd(lint.warnings, *ad);
  if (body.e) lint.warnings.push_back(where + ".e: no ad is fetched for a push with a message of its own");
  warnOfTrackers(lint.warnings, where + ".t", body.t);
  warnOfMessage(lint.warnings, *body.n);
  if (message->category) warnOfActions(lint.warnings, *message->category);
}

}  // namespace VorselKelp
