#include "brellixctl/fleet/FleetPayload.h"

#include <algorithm>

#include "VorselKelp/JSONText.h"
#include "VorselKelp/PayloadLint.h"
#include "base/Url.h"
#include "brellixctl/PayloadFile.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::PayloadLint;
using VorselKelp::Result;

namespace {

const JSONAny* find(const JSONAny* value, std::initializer_list<const char*> keys) {
  for (const char* key : keys) {
    if (value == nullptr) return nullptr;
    value = value->find(key);
  }
  return value;
}

/// Calls `take` with a text, or with each text of a list.
template <class Take>
void eachText(const JSONAny* value, Take take) {
  if (value == nullptr) return;
  if (const auto* text = value->as<std::string>()) take(*text);
  if (const auto* list = value->as<JSONAny::List>()) {
    for (const auto& element : *list) eachText(&element, take);
  }
}

}  // namespace

FleetPayload::FleetPayload(const std::string& bytes)
    : userInfo_(VorselKelp::platform::UserInfo::fromJSON(bytes)) {
  const auto json = JSONAny::decode(bytes);
  if (!json) return;
  const auto* alert = find(&*json, {"aps", "alert"});
  const auto remember = [&](const JSONAny* urls, const char* kind) {
    eachText(urls, [&](const std::string& url) {
      const auto parsed = VorselKelp::parseUrl(url);
      kinds_[parsed ? parsed->text : url] = kind;
    });
  };
  remember(find(alert, {"n", "image"}), "image");
  remember(find(alert, {"e"}), "ad");
  remember(find(alert, {"v"}), "view tracker");
  remember(find(alert, {"t"}), "impression tracker");
  remember(find(alert, {"n", "data", "t"}), "click tracker");
}

FleetPayload FleetPayload::sample(const std::string& server) {
  const auto url = [&](const std::string& path) { return "\"" + server + path + "\""; };
  return FleetPayload(R"({"aps":{"mutable-content":1,"alert":{"title":"Storm over the bay","v":)" +
                      url("/track/view?id=storm") + R"(,"t":[)" + url("/track/impression?id=storm") +
                      R"(],"n":{"body":"Gusts of up to 130 km/h are expected from tonight on.","image":)" +
                      url("/images/storm.png") + R"(,"data":{"url":)" + url("/articles/storm") + R"(,"t":[)" +
                      url("/track/click?id=storm") + R"(]}}}}})");
}

Result<FleetPayload> FleetPayload::read(const std::string& path) {
  const auto bytes = readPayload(path);
  if (!bytes) return bytes.error();
  return parse(*bytes, path);
}

Result<FleetPayload> FleetPayload::parse(const std::string& bytes, const std::string& name) {
  const auto json = VorselKelp::readJSONText(bytes);
  if (!json) return Error{name + " is no JSON: " + json.error().description};
  const auto lint = VorselKelp::lintPayload(bytes, "fleet");
  if (lint.root != PayloadLint::Root::push) {
    return Error{name + " does not read as a push; see brellixctl lint " + name};
  }
  const auto stop =
      std::ranges::find(lint.stops, PayloadLint::Stop::When::preparing, &PayloadLint::Stop::when);
  if (stop != lint.stops.end()) return Error{name + " stops the service extension: " + stop->text};
  const auto* alert = find(&*json, {"aps", "alert"});
  if (find(alert, {"n"}) == nullptr && find(alert, {"e"}) == nullptr) {
    return Error{name +
                 " has neither a notification nor the address of an ad: its extension would never answer"};
  }
  return FleetPayload(bytes);
}

std::string kindOf(const VorselKelp::platform::URLRequest& request,
                   const std::vector<FleetPayload>& payloads) {
  for (const auto& payload : payloads) {
    if (const auto known = payload.kinds().find(request.url); known != payload.kinds().end())
      return known->second;
  }
  const auto holds = [&](const char* part) { return request.url.find(part) != std::string::npos; };
  if (request.method == "POST" && holds("/v2/activity")) return "activity";
  if (request.method == "POST" && holds("/v2/users")) return "users";
  if (holds("/tag/")) return "configuration";
  if (holds("/v1/display/")) return "ad";
  // An ad's own picture too: pictures alone go to disk as they come.
  return request.bodyConsumer ? "image" : "other";
}

}  // namespace brellixctl
