#include "gateway/desktop/PushRequest.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "VorselKelpPosix/Hex.h"
#include "VorselKelpWebPush/Envelope.h"
#include "VorselKelpWebPush/Message.h"
#include "VorselKelpWebPush/Request.h"

namespace gateway {
namespace {

namespace webpush = VorselKelp::webpush;
using testing::StartsWith;

constexpr std::int64_t now = 1'800'000'000;

class PushRequestTest : public testing::Test {
 protected:
  [[nodiscard]] std::string device(const std::string& endpoint = "https://push.example/1") const {
    return webpush::subscriptionText({endpoint, keys_.auth, keys_.publicKey});
  }
  [[nodiscard]] Notification notification() const {
    return {.device = device(), .topic = "com.example.app", .identifier = "id-1", .payload = R"({"aps":{}})"};
  }
  static std::string header(const PushRequest& push, std::string_view name) {
    const auto found = std::ranges::find(push.request.headers, name, &VorselKelp::platform::HTTPHeader::name);
    return found == push.request.headers.end() ? "absent" : found->value;
  }
  static PushRequest made(const Notification& notification, Authorizations* authorizations = nullptr) {
    auto request = makePushRequest(notification, now, authorizations, false);
    EXPECT_TRUE(std::holds_alternative<PushRequest>(request)) << std::get<Answer>(request).reason;
    return std::get<PushRequest>(std::move(request));
  }
  static std::string refused(const Notification& notification, bool loopback = false) {
    const auto request = makePushRequest(notification, now, nullptr, loopback);
    const auto* answer = std::get_if<Answer>(&request);
    return answer != nullptr ? std::to_string(answer->status) + " " + std::string(answer->reason) : "";
  }

  const webpush::ReceiverKeys keys_ = *webpush::makeReceiverKeys();
};

TEST_F(PushRequestTest, SaysHowLongAndHowSoon) {
  struct Case {
    std::optional<std::int64_t> expiration;
    int priority;
    const char* ttl;
    const char* urgency;
    std::optional<std::int64_t> told;
  };
  for (const auto& [expiration, priority, ttl, urgency, told] :
       {Case{{}, 10, "604800", "high", {}},
        {0, 5, "0", "normal", {}},
        {now, 1, "0", "low", {}},
        {now + 1, 10, "1", "high", now + 1},
        {std::int64_t{1} << 62, 10, "2147483647", "high", std::int64_t{1} << 62}}) {
    auto what = notification();
    what.expiration = expiration;
    what.priority = priority;
    const auto push = made(what);
    EXPECT_EQ(header(push, "TTL"), ttl);
    EXPECT_EQ(header(push, "Urgency"), urgency);
    EXPECT_EQ(header(push, "Topic") + header(push, "Authorization"), "absentabsent");
    EXPECT_EQ(push.origin, "https://push.example");
    const auto read = webpush::unwrap(*webpush::decrypt(push.request.body, keys_));
    EXPECT_EQ(read->payload, what.payload);
    EXPECT_EQ(read->envelope, (webpush::Envelope{"id-1", "", told}));
  }
}

TEST_F(PushRequestTest, ReplacesWithinAnApplicationAlone) {
  auto what = notification();
  what.collapse = "storm";
  const auto first = made(what);
  EXPECT_EQ(webpush::unwrap(*webpush::decrypt(first.request.body, keys_))->envelope.collapse, "storm");
  EXPECT_EQ(header(first, "Topic"), webpush::topicOf(std::string("com.example.app\0storm", 21)));
  what.topic += "s";
  what.collapse = "torm";
  EXPECT_NE(header(made(what), "Topic"), header(first, "Topic"));
}

TEST_F(PushRequestTest, RefusesWhatDesktopsDoNotTake) {
  EXPECT_EQ(refused(notification()), "");
  for (const auto& token : {std::string("{}"), device().substr(1), device("http://push.example/1"),
                            device("http://localhost/1"), std::string(32, 'x')}) {
    auto what = notification();
    what.device = token;
    EXPECT_EQ(refused(what), "400 BadDeviceToken") << token;
  }
  auto what = notification();
  what.device = device("http://localhost/1");
  EXPECT_EQ(refused(what, true), "");
  what.device = device("http://push.example/1");
  EXPECT_EQ(refused(what, true), "400 BadDeviceToken");

  what = notification();
  const auto envelope = webpush::putInto({"id-1", "", {}}, what.payload)->size() - what.payload.size();
  const auto sized = [&](std::size_t bytes) { return R"({"a":")" + std::string(bytes - 8, 'x') + "\"}"; };
  what.payload = sized(3993 - envelope);
  EXPECT_EQ(refused(what), "");
  what.payload = sized(3993 - envelope + 1);
  EXPECT_EQ(refused(what), "413 PayloadTooLarge");
  what = notification();
  what.type = PushType::voip;
  EXPECT_EQ(refused(what), "413 PayloadTooLarge");
  what = notification();
  what.collapse = "\xff";
  EXPECT_EQ(refused(what), "400 BadCollapseId");
}

TEST_F(PushRequestTest, SignsOnceForEachPushService) {
  const auto keys = *webpush::makeVapidKeys();
  Authorizations authorizations({keys, "mailto:a@b.example"});
  auto what = notification();
  const auto first = header(made(what, &authorizations), "Authorization");
  EXPECT_THAT(first, StartsWith("vapid t="));
  what.device = device("https://push.example/2");
  EXPECT_EQ(header(made(what, &authorizations), "Authorization"), first);
  what.device = device("https://other.example/1");
  EXPECT_NE(header(made(what, &authorizations), "Authorization"), first);
}

}  // namespace
}  // namespace gateway
