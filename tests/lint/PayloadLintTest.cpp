#include "VorselKelp/PayloadLint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "json/Outline.h"

namespace VorselKelp::lint_tests {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

std::string push(const std::string& message, const std::string& alert = R"("title":"T")") {
  return R"({"aps":{"mutable-content":1,"alert":{)" + alert + R"(,"n":{)" + message + "}}}}";
}

std::string sized(std::size_t bytes) {
  const auto around = push(R"("body":"")").size();
  return push(R"("body":")" + std::string(bytes - around, 'x') + '"');
}

std::string silent(const std::string& alert, const std::string& more = "") {
  return R"({"aps":{"content-available":1,"alert":{)" + alert + "}" + more + "}}";
}

std::string carousel(const std::string& message) {
  return R"({"aps":{"alert":"Pages","category":"c"},"isMultiple":true,"p":[{"t":"T","o":{"image":"https://i.example/1",)" +
         message + "}}]}";
}

TEST(PayloadLint, WarnsOfWhatIsMostLikelyNotMeant) {
  const std::string data = R"("data":{"url":"https://o.example","t":["https://c.example"]})";
  const std::pair<std::string, const char*> cases[] = {
      {push(R"("data":{"url":"javascript:x"})"), "aps.alert.n.data.url: \"javascript:x\" opens no page"},
      {push(R"("data":{"url":"file:///etc/passwd"})"),
       "aps.alert.n.data.url: \"file:///etc/passwd\" opens no page"},
      {push(R"("data":{"url":"HTTPS://o.example"})"), "small letters"},
      {push(R"("data":{"url":"article/7"})"), "is relative; the application gets it"},
      {push(R"("data":{"url":"https:article"})"), "names no host; a tap opens nothing"},
      {push(R"("data":{"url":"https://b\u00fccher.example"})"),
       "a tap opens nothing; write its host in ASCII"},
      {push(R"("data":{"url":"https://o.example/${VA_BACID}/${id}"})"), "\"${id}\" stays as it is"},
      {push(R"("data":{"url":"https://o.example","t":["https://c.example/${VA_BACID}"]})"),
       "aps.alert.n.data.t[0]: \"${VA_BACID}\" stays as it is; nothing is filled in here"},
      {push(R"("actions":[{"action":"a","title":"A","url":" "}])"),
       "aps.alert.n.actions[0].url: \" \" forms no URL"},
      {push(R"("actions":[{"action":"a","title":"A"},{"action":"a","title":"B"}])"),
       "aps.alert.n.actions[1].action: \"a\" is another button's too"},
      {push(R"("actions":[{"action":"","title":"A"}])"), "aps.alert.n.actions[0].action: empty"},
      {push(R"("actions":[{"action":"a","title":" "}])"), "aps.alert.n.actions[0].title: empty"},
      {push(R"("actions":[{"action":"1","title":"1"},{"action":"2","title":"2"},{"action":"3","title":"3"},
               {"action":"4","title":"4"},{"action":"5","title":"Fifth"}])"),
       "\"Fifth\" is the first that is left out"},
      {push("", R"("title":"")"), "aps.alert.title: empty"},
      {push("", R"("title":"")"), "neither title nor body"},
      {push("", R"("title":"\u00e9 \\u00e9")"), "is shown with its escapes; one of them is broken"},
      {push("", R"("title":"\\\\u00e9")"), "they are escaped twice"},
      {push(R"("body":"")"), "aps.alert.n.body: empty"},
      {push(R"("body":"\\u00e9")"), "only the title of a push is decoded"},
      {push(R"("body":"C:\\9")"), "only the title of a push is decoded"},
      {push(R"("sound":"ping.WAV")"), "\"ping.WAV.wav\" is looked for"},
      {push(R"("sound":"ping.caf")"), "is no .wav file"},
      {push(R"("sound":"sounds/ping")"), "is no name of a file"},
      {push(R"("sound":"")"), "aps.alert.n.sound: empty"},
      {push(R"("badge":"3")"), "the icon's number is aps.badge"},
      {push(R"("bdoy":"B")"), "aps.alert.n.bdoy: nothing reads this key; is \"body\" meant?"},
      {push(R"("isSilent":true)"), "is \"silent\" meant?"},
      {push(R"("data":{"url":"https://o.example","t":["HTTP://c.example"]})"), "is not encrypted"},
      {push(R"("data":{"url":"https://o.example","URL":1,"T":[]})"),
       "aps.alert.n.data.T: nothing reads this key"},
      {push(R"("body":"A","bod\u0079":"B")"), "aps.alert.n.body: stands there more than once"},
      {R"({"aps":{"alert":{"title":"T","n":{}}}})", "aps.mutable-content: not 1"},
      {R"({"aps":{"mutable-content":2,"alert":{"title":"T","n":{}}}})", "aps.mutable-content: not 1"},
      {R"({"aps":{"content-available":true,"alert":{"title":"T","n":{}}}})", "aps.content-available: not 1"},
      {silent("", R"(,"mutable-content":1)"), "aps.mutable-content: nobody reads it"},
      {silent("", R"(,"sound":"ping","badge":null)"), "aps.sound: nobody reads it"},
      {silent(R"("v":"https://v.example")"), "aps.alert.v: nobody reads it"},
      {R"({"aps":{"content-available":1.0,"mutable-content":null},"p":[]})", "p: nobody reads it"},
      {silent(R"("gl":5)"), "aps.alert.gl: no list of objects"},
      {silent(R"("bl":[{"id":"a","ib":"b"},{"id":"a"}])"), "aps.alert.bl: 1 of 2 entries"},
      {silent(R"("gl":[],"bl":[])"), "aps.alert.bl: not handed over"},
      {silent(R"("title":"","gl":[{"id":"a","c":[]}])"), ""},
      {push("", R"("title":"T","e":"https://a.example")"), "aps.alert.e: no ad is fetched"},
      {push(R"("body":"A","bdoy":"B","x":0)"), ""},
      {carousel(R"("actions":[{"action":"a","title":"A"}],)" + data),
       "p[0].o.actions: a carousel shows no buttons"},
      {carousel(R"("data":{"url":"../x","t":["https://c.example"]})"),
       "\"../x\" is relative; a tap opens nothing"},
      {carousel(R"("data":{"url":"a:b","t":["https://c.example","https://d.example"]})"),
       "requests only the first"},
      {carousel(R"("el":3,)" + data), "p[0].o.el: none of 0, 1 and 2"},
      {carousel(R"("el":2,"body":"${name}",)" + data), ""},
      {R"({"aps":{"alert":"Pages"},"isMultiple":true,"p":[{"i":["https://i.example"],"o":{"image":"https://i.example/1",)" +
           data + "}}]}",
       "p[0].i: requested by nobody"},
      {sized(3993), ""},
      {sized(3994), "3994 bytes; desktops get at most 3993"},
      {sized(4097), "4097 bytes; push services take at most 4096"},
  };
  platform::NotificationContent original;
  original.title = "Pages";
  for (const auto& [payload, warning] : cases) {
    const auto lint = lintPayload(payload, "n", original);
    EXPECT_THAT(lint.errors, IsEmpty()) << payload;
    if (*warning != '\0') {
      EXPECT_THAT(lint.warnings, Contains(HasSubstr(warning))) << payload;
    } else {
      EXPECT_THAT(lint.warnings, IsEmpty()) << payload;
    }
  }
}

TEST(PayloadLint, NamesThePlaceAndWhatWouldBeRight) {
  const std::pair<std::string, const char*> errors[] = {
      {R"({"aps":{"alert":"Hello"}})",
       "as a push: aps.alert: expected object, found text; a push looks like"},
      {R"({"aps":{"alert":"Hello"}})", "as a campaign: p: missing; a campaign looks like"},
      {"[1]", "the payload is no JSON object; a payload looks like"},
      {R"({"a":{"b":[0,)" + std::string(63, '[') + std::string(63, ']') + "]}}", "a.b[1][0]"},
  };
  for (const auto& [payload, error] : errors)
    EXPECT_THAT(lintPayload(payload, "n").errors, Contains(StartsWith(error))) << payload;
  for (const std::size_t levels : {63, 64, 65, 66}) {
    const auto lint = lintPayload(
        R"({"p":[],"a":)" + std::string(levels - 1, '[') + std::string(levels - 1, ']') + "}", "n");
    EXPECT_EQ(lint.errors.empty(), levels <= 64) << levels;
  }
  const std::pair<std::string, std::vector<std::string>> stops[] = {
      {R"({"aps":{"mutable-content":1},"p":[]})",
       {"aps.mutable-content: 1 for a campaign", "the payload has no \"isMultiple\""}},
      {R"({"aps":{"alert":{"title":"T"}},"isMultiple":true,"p":5})",
       {"the payload can't be read: p: expected list"}},
      {R"({"isMultiple":true,"p":[{"o":{}},{"o":{"image":" ","data":{"url":""}}}]})",
       {"p[1].o.image: the image \" \" forms no URL", "p[0].o.image: missing",
        "p[0].o.data: the message has no", "p[1].o.data: the message's \"data\" has no tracker"}},
  };
  for (const auto& [payload, texts] : stops) {
    const auto lint = lintPayload(payload, "n");
    ASSERT_EQ(lint.stops.size(), texts.size()) << payload;
    for (std::size_t i = 0; i < texts.size(); ++i) EXPECT_THAT(lint.stops[i].text, StartsWith(texts[i]));
  }
}

TEST(PayloadLint, OutlinesTellWhatADocumentForgets) {
  EXPECT_THAT(
      json::duplicateKeys(R"({"a":[{"b":"\"","c":"{\"b\":1,","b":{"b":1,"b":2,"b":3}}],"d":1,"a":0})"),
      ElementsAre("a[0].b", "a[0].b.b", "a"));
  EXPECT_THAT(json::duplicateKeys(R"([{"a":1},{"a":1,"b":{"a":"a"}}])"), IsEmpty());
  EXPECT_EQ(json::placeBeyond(R"({"a":[0,{"b":[[1]]}]})", 3), "a[1].b");
  EXPECT_EQ(json::placeBeyond(R"({"a":[0,{"b":"[[[["}]})", 3), std::nullopt);
  for (const char* broken : {"", "\"", "{\"a", "]]]", "{\"\\", "{\"a\\u12\":1"}) {
    EXPECT_THAT(json::duplicateKeys(broken), IsEmpty()) << broken;
    EXPECT_EQ(json::placeBeyond(broken, 2), std::nullopt) << broken;
  }
}

}  // namespace
}  // namespace VorselKelp::lint_tests
