#include "VorselKelpSystem/NotificationRecords.h"
#include "brellixctl/Reports.h"

namespace brellixctl {

using VorselKelp::JSONAny;
namespace platform = VorselKelp::platform;
namespace system = VorselKelp::system;

namespace {

JSONAny orNull(const std::optional<JSONAny>& value) {
  return value ? *value : JSONAny();
}
JSONAny listOf(const std::vector<JSONAny>& values) {
  return JSONAny::List(values);
}

JSONAny::Dictionary silentJSON(const PushOutcome& outcome) {
  return {{"id", outcome.shown.identifier},       {"silent", true},
          {"delegate", listOf(outcome.delegate)}, {"extension", outcome.extension},
          {"requests", listOf(outcome.requests)}, {"console", listOf(outcome.console)}};
}

}  // namespace

JSONAny::Dictionary toJSON(const LaunchOutcome& outcome) {
  return {{"initialised", outcome.initialised},
          {"authorisation", outcome.authorisation},
          {"token", outcome.token ? JSONAny(*outcome.token) : JSONAny()},
          {"delegate", listOf(outcome.delegate)},
          {"results", listOf(outcome.results)},
          {"requests", listOf(outcome.requests)},
          {"console", listOf(outcome.console)}};
}

JSONAny::Dictionary notificationJSON(const platform::NotificationRequest& request,
                                     const std::vector<platform::NotificationAction>& actions) {
  const auto& content = request.content;
  JSONAny sound;
  if (content.sound) sound = content.sound->name.value_or("default");
  JSONAny::List attachments;
  for (const auto& attachment : content.attachments) attachments.push_back(attachment.path);
  const auto& category = content.categoryIdentifier;
  return {{"id", request.identifier},
          {"title", content.title},
          {"subtitle", content.subtitle},
          {"body", content.body},
          {"sound", std::move(sound)},
          {"category", category.empty() ? JSONAny() : JSONAny(category)},
          {"actions", system::encodeActions(actions)},
          {"attachments", std::move(attachments)},
          {"badge", content.badge ? JSONAny(*content.badge) : JSONAny()}};
}

JSONAny::Dictionary toJSON(const PushOutcome& outcome) {
  if (outcome.kept) return {{"id", outcome.shown.identifier}, {"kept", true}};
  if (outcome.silent) return silentJSON(outcome);
  auto json = notificationJSON(outcome.shown, outcome.actions);
  json.push_back({"extension", outcome.extension});
  json.push_back({"requests", listOf(outcome.requests)});
  json.push_back({"console", listOf(outcome.console)});
  return json;
}

JSONAny::Dictionary toJSON(const TapOutcome& outcome) {
  JSONAny::Dictionary json;
  if (outcome.completion) json.push_back({"completion", *outcome.completion});
  json.push_back({"browser", orNull(outcome.browser)});
  json.push_back({"deepLink", orNull(outcome.deepLink)});
  json.push_back({"requests", listOf(outcome.requests)});
  json.push_back({"console", listOf(outcome.console)});
  return json;
}

JSONAny::Dictionary toJSON(const ShowOutcome& outcome) {
  JSONAny::Dictionary json;
  const auto* members = outcome.carousel ? outcome.carousel->as<JSONAny::Dictionary>() : nullptr;
  for (const char* name : {"position", "title", "body", "image", "arrows"}) {
    const auto* value = members != nullptr ? outcome.carousel->find(name) : nullptr;
    json.push_back({name, value != nullptr ? *value : JSONAny()});
  }
  json.push_back({"opened", orNull(outcome.opened)});
  json.push_back({"requests", listOf(outcome.requests)});
  json.push_back({"console", listOf(outcome.console)});
  return json;
}

}  // namespace brellixctl
