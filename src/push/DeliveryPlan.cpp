#include "push/DeliveryPlan.h"

#include <string_view>

#include "base/Text.h"

namespace VorselKelp {
namespace {

constexpr std::string_view actionPlaceholder = "${VA_BACID}";

std::optional<platform::NotificationSound> soundOf(const N& n) {
  if (n.silent.value_or(false)) return std::nullopt;
  if (!n.sound) return platform::NotificationSound::defaultSound();
  return platform::NotificationSound::named(*n.sound + ".wav");
}

/// A title is sent as ASCII whose escapes stand for other characters; one that is no such text is itself.
std::string titleOf(const std::string& sent) {
  return fromNonLossyAscii(sent).value_or(sent);
}

DeliveryPlan::Message planMessage(NotificationBody body) {
  N& n = *body.n;
  DeliveryPlan::Message message;
  message.sound = soundOf(n);
  if (n.cl.value_or(0) == 0) {
    message.category = std::move(n.actions).value_or(std::vector<Action>{});
    message.image = std::move(n.image);
  }
  message.title = titleOf(body.title);
  message.body = std::move(n.body);
  message.impressionTrackers = std::move(body.t).value_or(std::vector<std::string>{});
  message.target = std::move(n.data);
  message.tag = std::move(n.tag);
  return message;
}

}  // namespace

DeliveryPlan planDelivery(PushObj push, std::string identifier) {
  NotificationBody& body = push.aps.notificationBody;
  DeliveryPlan plan;
  plan.identifier = std::move(identifier);
  plan.viewTracker = std::move(body.v);
  if (body.n) {
    plan.kind = planMessage(std::move(body));
  } else {
    plan.kind = DeliveryPlan::Ad{titleOf(body.title), body.adex, std::move(body.e)};
  }
  return plan;
}

std::string categoryIdentifier(const std::string& requestIdentifier) {
  return "Vorsel_categ_" + std::to_string(stableHash(requestIdentifier));
}

platform::NotificationActionOption optionOf(const Action& action) {
  return lowerCased(action.title) == "no" ? platform::NotificationActionOption::destructive
                                          : platform::NotificationActionOption::foreground;
}

std::string storedUrl(const std::string& url, const std::string& action) {
  return replaceAll(url, actionPlaceholder, action == platform::defaultActionIdentifier ? "0" : action);
}

}  // namespace VorselKelp
