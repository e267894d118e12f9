#include <string>
#include <vector>

#include "json/Encoder.h"
#include "kellp/KellpTest.h"
#include "push/PayloadDecoder.h"

namespace VorselKelp {
namespace {

using platform::UserInfo;
using testing::IsEmpty;

constexpr const char* everything =
    R"({"aps":{"alert":{"bl":["b"],"gl":[{"c":["1","2"],"e":"e","er":true,"lr":false,"r":5,"id":"g"}],"title":"T",)"
    R"("adex":true,"e":"https://e","n":{"renotify":true,"el":1,"ap":"ap","an":"an","tc":"tc","dc":"dc","cl":2,)"
    R"("tag":"tag","sound":"ping","vibrate":[100,-1],"badge":"3","image":"https://i","body":"B",)"
    R"("actions":[{"action":"a","title":"A","url":"https://a"},{"action":"b","title":"B"}],)"
    R"("data":{"url":"https://o","t":["https://c"]},"silent":false,"tid":"task","scl":true},"v":"https://v",)"
    R"("t":["https://t1","https://t2"]},"apns-priority":10,"mutable-content":1}})";

std::string inAlert(const std::string& alert) {
  return "{\"aps\":{\"alert\":" + alert + "}}";
}

TEST(Payload, EveryFieldIsReadAndWrittenInTheOrderOfItsTable) {
  const auto push = Payload::open(UserInfo::fromJSON(everything))->pushObj();
  ASSERT_TRUE(push) << push.error().description;
  EXPECT_EQ(*json::encode(*push), everything);
  const auto least =
      Payload::open(UserInfo::fromJSON(inAlert(R"({"title":"T","n":{"cl":-9223372036854775808.0}})")))
          ->pushObj();
  ASSERT_TRUE(least) << least.error().description;
  EXPECT_EQ(least->aps.notificationBody.n->cl, INT64_MIN);
  const std::string campaign =
      R"({"p":[{"i":["https://i"],"o":{"body":"1"},"t":"T1"},{"o":{}}],"t":["https://t"]})";
  const auto decoded = Payload::open(UserInfo::fromJSON(campaign))->campaign();
  ASSERT_TRUE(decoded) << decoded.error().description;
  EXPECT_EQ(*json::encode(*decoded), campaign);
}

TEST(Payload, ErrorsNameThePath) {
  const std::pair<std::string, const char*> cases[] = {
      {"{}", "aps: missing"},
      {R"({"aps":1})", "aps: expected object, found number"},
      {R"({"aps":{}})", "aps.alert: missing"},
      {inAlert("\"Hello\""), "aps.alert: expected object, found text"},
      {inAlert("{}"), "aps.alert.title: missing"},
      {inAlert(R"({"title":5})"), "aps.alert.title: expected text, found number"},
      {inAlert(R"({"title":"T","adex":"true"})"), "aps.alert.adex: expected boolean, found text"},
      {inAlert(R"({"title":"T","t":["a",2]})"), "aps.alert.t[1]: expected text, found number"},
      {inAlert(R"({"title":"T","gl":[{"c":[]}]})"), "aps.alert.gl[0].id: missing"},
      {inAlert(R"({"title":"T","n":{"cl":1.5}})"), "aps.alert.n.cl: expected 64-bit integer, found number"},
      {inAlert(R"({"title":"T","n":{"cl":9223372036854775808.0}})"),
       "aps.alert.n.cl: expected 64-bit integer, found number"},
      {inAlert(R"({"title":"T","n":{"el":99999999999999999999}})"),
       "aps.alert.n.el: expected 64-bit integer, found number"},
      {inAlert(R"({"title":"T","n":{"badge":3}})"), "aps.alert.n.badge: expected text, found number"},
      {inAlert(R"({"title":"T","n":{"actions":[{"action":"a"}]}})"), "aps.alert.n.actions[0].title: missing"},
      {inAlert(R"({"title":"T","n":{"data":{"t":[]}}})"), "aps.alert.n.data.url: missing"},
  };
  for (const auto& [json, error] : cases) {
    const auto push = Payload::open(UserInfo::fromJSON(json))->pushObj();
    ASSERT_FALSE(push) << json;
    EXPECT_EQ(push.error().description, error) << json;
  }
  EXPECT_EQ(Payload::open(UserInfo::fromJSON(R"({"p":[{"t":"x"}]})"))->campaign().error().description,
            "p[0].o: missing");
}

TEST(Payload, OptionalFieldsMayBeNull) {
  const auto push =
      Payload::open(
          UserInfo::fromJSON(inAlert(R"({"title":"T","n":{"body":null,"actions":null},"v":null,"t":null})")))
          ->pushObj();
  ASSERT_TRUE(push);
  EXPECT_TRUE(push->aps.notificationBody.n);
  EXPECT_EQ(*json::encode(*push), inAlert(R"({"title":"T","n":{}})"));
}

class ContentTest : public KellpTest {
 protected:
  static std::optional<NotificationObject> content(UserInfo info) {
    platform::NotificationRequest request;
    request.identifier = "n-1";
    request.content.userInfo = std::move(info);
    return VorselKellp::getNotificationContent(request);
  }
};

TEST_F(ContentTest, ASingleMessageIsFlattened) {
  const auto read = content(UserInfo::fromJSON(everything));
  ASSERT_TRUE(read);
  ASSERT_EQ(read->notification.size(), 1u);
  VorselReceivedObject expected;
  expected.notifId = "n-1";
  expected.title = "T";
  expected.renotify = true;
  expected.el = 1;
  expected.ap = "ap";
  expected.an = "an";
  expected.tc = "tc";
  expected.dc = "dc";
  expected.cl = 2;
  expected.tag = "tag";
  expected.sound = "ping";
  expected.vibrate = {100, -1};
  expected.badge = "3";
  expected.image = "https://i";
  expected.body = "B";
  expected.actions = {{"a", "A", "https://a"}, {"b", "B", std::nullopt}};
  expected.data = Conversion{"https://o", std::vector<std::string>{"https://c"}};
  expected.silent = false;
  expected.impTracker = {"https://t1", "https://t2"};
  expected.taskId = "task";
  expected.scl = true;
  EXPECT_EQ(read->notification[0], expected);
  EXPECT_THAT(lines(), IsEmpty());

  const auto bare = content(UserInfo::fromJSON(inAlert(R"({"title":"T","t":["https://t"]})")));
  VorselReceivedObject onlyTitle;
  onlyTitle.notifId = "n-1";
  onlyTitle.title = "T";
  onlyTitle.impTracker = {"https://t"};
  EXPECT_EQ(bare->notification, std::vector{onlyTitle});
}

TEST_F(ContentTest, ACampaignHasOneElementForEachMessage) {
  const auto read = content(UserInfo::fromJSON(
      R"({"p":[{"o":{"body":"1","tid":"x"},"t":"T1","i":["https://i"]},{"o":{}}],"aps":{"alert":"a"}})"));
  ASSERT_TRUE(read);
  ASSERT_EQ(read->notification.size(), 2u);
  EXPECT_EQ(read->notification[0].title, "T1");
  EXPECT_EQ(read->notification[0].body, "1");
  EXPECT_EQ(read->notification[0].taskId, "x");
  EXPECT_EQ(read->notification[0].impTracker, std::vector<std::string>{"https://i"});
  EXPECT_FALSE(read->notification[1].title);
  EXPECT_EQ(read->notification[1].notifId, "n-1");
  EXPECT_TRUE(content(UserInfo::fromJSON(R"({"p":[]})"))->notification.empty());
}

TEST_F(ContentTest, NeitherShapeAndNoJSONAreReportedAndNoObjectIsNot) {
  EXPECT_FALSE(content(UserInfo::fromJSON(R"({"aps":{"alert":"Hello"}})")));
  EXPECT_THAT(lines(), testing::ElementsAre("Push Campaign object failed p: missing "
                                            "Push Object failed aps.alert: expected object, found text "));
  app_.console->clear();
  EXPECT_FALSE(content(UserInfo(JSONAny::Dictionary{{"a", "\xff"}})));
  EXPECT_FALSE(content(UserInfo::fromJSON("[]")));
  EXPECT_THAT(lines(), IsEmpty());
  for (const std::string& bytes :
       {std::string("no"), std::string(), std::string("{\"a\":\"\xff\"}"), std::string(10000, '[')})
    EXPECT_FALSE(content(UserInfo::fromJSON(bytes)));
  EXPECT_EQ(lines().size(), 4u);
  EXPECT_THAT(lines(), testing::Each(testing::StartsWith("JSON serialization failed ")));
}

TEST_F(ContentTest, ADictionaryIsAsGoodAsBytes) {
  const auto dictionary = JSONAny::decode(everything);
  ASSERT_TRUE(dictionary);
  EXPECT_EQ(content(UserInfo(*dictionary->as<JSONAny::Dictionary>()))->notification,
            content(UserInfo::fromJSON(everything))->notification);
}

}  // namespace
}  // namespace VorselKelp
