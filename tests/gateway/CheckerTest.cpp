#include "gateway/provider/Checker.h"

#include <gmock/gmock.h>

#include "gateway/ProviderToken.h"

namespace gateway {
namespace {

const std::string device(64, 'a');

struct Case {
  std::string what;
  std::function<void(Request&)> change;
  std::string expected;
};

Request good() {
  return {"POST", "/3/device/" + device, {{"apns-topic", "com.example.app"}}, R"({"aps":{}})", false};
}

void set(Request& request, const std::string& name, const std::string& value) {
  request.fields.push_back({name, value});
}

std::string check(Request request, CheckOptions options = {{}, true}) {
  Checker checker(std::move(options), ProviderTokens({}, timeNow));
  ShownTokens shown;
  const auto checked = checker.check(std::move(request), shown);
  if (const auto* answer = std::get_if<Answer>(&checked))
    return std::to_string(answer->status) + " " + std::string(answer->reason);
  const auto& notification = std::get<Notification>(checked);
  return notification.topic + " " + std::to_string(notification.priority) + " " +
         (notification.expiration ? std::to_string(*notification.expiration) : "-") + " " +
         notification.collapse;
}

auto with(const std::string& name, const std::string& value) {
  return [=](Request& request) { set(request, name, value); };
}

auto topic(const std::string& value, const std::string& type) {
  return [=](Request& request) {
    request.fields.clear();
    set(request, "apns-topic", value);
    set(request, "apns-push-type", type);
  };
}

auto path(const std::string& value) {
  return [=](Request& request) { request.path = value; };
}

auto body(const std::string& type, std::size_t size) {
  return [=](Request& request) {
    set(request, "apns-push-type", type);
    request.body = R"({"aps":{},"text":")";
    request.body += std::string(size - request.body.size() - 2, 'x') + "\"}";
  };
}

TEST(CheckerTest, TellsEverythingThatCanBeWrong) {
  const std::string uuid = "123E4567-e89b-12d3-a456-426614174000";
  for (const auto& [what, change, expected] : std::vector<Case>{
           {"nothing", [](Request&) {}, "com.example.app 10 - "},
           {"method", [](Request& request) { request.method = "GET"; }, "405 MethodNotAllowed"},
           {"path", path("/"), "404 BadPath"},
           {"path", path("/3/devices/" + device), "404 BadPath"},
           {"no token", path("/3/device"), "400 MissingDeviceToken"},
           {"no token", path("/3/device/"), "400 MissingDeviceToken"},
           {"half a digit", path("/3/device/abc"), "400 BadDeviceToken"},
           {"no digits", path("/3/device/zz"), "400 BadDeviceToken"},
           {"more", path("/3/device/aa/bb"), "400 BadDeviceToken"},
           {"too long", path("/3/device/" + std::string(2802, 'a')), "400 BadDeviceToken"},
           {"id", with("apns-id", uuid), "com.example.app 10 - "},
           {"id", with("apns-id", uuid.substr(1)), "400 BadMessageId"},
           {"id", with("apns-id", "123E4567-e89b-12d3-a456-42661417400g"), "400 BadMessageId"},
           {"no topic", [](Request& request) { request.fields.clear(); }, "400 MissingTopic"},
           {"topic", topic("com.example.app/../x", "alert"), "400 BadTopic"},
           {"topic", topic("", "alert"), "400 BadTopic"},
           {"topic", topic(".voip", "voip"), "400 BadTopic"},
           {"topic of calls", topic("com.example.app.voip", "voip"), "com.example.app 10 - "},
           {"type", topic("com.example.app", "loud"), "400 InvalidPushType"},
           {"twice", with("apns-topic", "com.example.app"), "400 DuplicateHeaders"},
           {"expiration", with("apns-expiration", "0"), "com.example.app 10 0 "},
           {"expiration", with("apns-expiration", "1800000000"), "com.example.app 10 1800000000 "},
           {"expiration", with("apns-expiration", "-1"), "400 BadExpirationDate"},
           {"expiration", with("apns-expiration", "1.5"), "400 BadExpirationDate"},
           {"expiration", with("apns-expiration", "99999999999999999999"), "400 BadExpirationDate"},
           {"expiration", with("apns-expiration", ""), "400 BadExpirationDate"},
           {"priority", with("apns-priority", "1"), "com.example.app 1 - "},
           {"priority", with("apns-priority", "05"), "400 BadPriority"},
           {"background", with("apns-push-type", "background"), "com.example.app 5 - "},
           {"loud background",
            [](Request& request) {
              set(request, "apns-push-type", "background");
              set(request, "apns-priority", "10");
            },
            "400 BadPriority"},
           {"collapse", with("apns-collapse-id", std::string(64, 'c')),
            "com.example.app 10 - " + std::string(64, 'c')},
           {"collapse", with("apns-collapse-id", std::string(65, 'c')), "400 BadCollapseId"},
           {"empty", [](Request& request) { request.body.clear(); }, "400 PayloadEmpty"},
           {"no object", [](Request& request) { request.body = "[1]"; }, "400 PayloadEmpty"},
           {"largest", body("alert", 4096), "com.example.app 10 - "},
           {"too large", body("alert", 4097), "413 PayloadTooLarge"},
           {"largest call", body("voip", 5120), "com.example.app 10 - "},
           {"cut off", [](Request& request) { request.bodyTooLarge = true; }, "413 PayloadTooLarge"},
       }) {
    auto request = good();
    change(request);
    EXPECT_EQ(check(std::move(request)), expected) << what;
  }
}

TEST(CheckerTest, WantsATokenAndTheTopicsThatItWasTold) {
  EXPECT_EQ(check(good(), {}), "403 MissingProviderToken");
  EXPECT_EQ(check(good(), {{"com.example.other"}, true}), "400 TopicDisallowed");
  EXPECT_EQ(check(good(), {{"com.example.other", "com.example.app"}, true}), "com.example.app 10 - ");
}

}  // namespace
}  // namespace gateway
