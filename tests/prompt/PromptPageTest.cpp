#include "prompt/PromptPage.h"

#include <string>

#include "kellp/KellpTest.h"
#include "prompt/CustomPromtEvent.h"
#include "prompt/MessageText.h"

namespace VorselKelp {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(PromptPage, LoadsTheScriptAndHandsOverTheConfiguration) {
  const auto page = promptPage("http://127.0.0.1:8080", R"({"a":1})");
  EXPECT_THAT(page, HasSubstr(R"(<html lang="en">)"));
  EXPECT_THAT(page, HasSubstr(R"(<script async src="http://127.0.0.1:8080/v2/mobile.js"></script>)"));
  EXPECT_THAT(page, HasSubstr(R"(var _VSPC = {"a":1};)"));
  EXPECT_EQ(occurrences(page, "<script"), 2u);
  for (const char* name : {"pns.htmlOK", "pns.ok", "pns.htmlCancel", "pns.cancel"})
    EXPECT_EQ(occurrences(page, std::string("\"") + name + "\""), 1u) << name;
}

TEST(CustomPromtEvent, OnlyAnOkInTheNameOfAnObjectAgrees) {
  struct Case {
    const char* text;
    bool agrees;
    const char* shown;  ///< null: it does not decode
  };
  const Case cases[] = {
      {R"({"event":"pns.ok","data":{"x":[1]}})", true,
       R"(CustomPromtEvent(event: Optional("pns.ok"), data: Optional(DataClass())))"},
      {R"({"event":"book"})", true, R"(CustomPromtEvent(event: Optional("book"), data: nil))"},
      {R"({"event":"pns.OK"})", false, R"(CustomPromtEvent(event: Optional("pns.OK"), data: nil))"},
      {R"({"event":"pns.cancel"})", false, R"(CustomPromtEvent(event: Optional("pns.cancel"), data: nil))"},
      {R"({"event":null,"data":null,"ok":1})", false, "CustomPromtEvent(event: nil, data: nil)"},
      {R"({"event":"ok","data":"text"})", true,
       R"(CustomPromtEvent(event: Optional("ok"), data: Optional(DataClass())))"},
      {R"({"event":"ok","data":[1]})", true,
       R"(CustomPromtEvent(event: Optional("ok"), data: Optional(DataClass())))"},
      {R"({"event":"ok","data":tru})", false, nullptr},
      {R"({"event":5})", false, nullptr},
      {R"(["ok"])", false, nullptr},
      {"ok", false, nullptr},
      {"", false, nullptr},
  };
  for (const auto& c : cases) {
    const auto event = CustomPromtEvent::decode(c.text);
    ASSERT_EQ(event.ok(), c.shown != nullptr) << c.text;
    if (!event) continue;
    EXPECT_EQ(event->agrees(), c.agrees) << c.text;
    EXPECT_EQ(event->description(), c.shown);
  }
}

TEST(CustomPromtEvent, HugeAnswersAreBounded) {
  const auto named = [](std::size_t length) {
    std::string name = "ok!";  // of an odd length, so that the cut comes inside a character
    while (name.size() < length) name += "\xc3\xa9";
    return R"({"event":")" + name + "\"}";
  };
  std::string text = named(CustomPromtEvent::textLimit - 20);
  text.resize(CustomPromtEvent::textLimit, ' ');
  const auto longest = CustomPromtEvent::decode(text);
  ASSERT_TRUE(longest);
  EXPECT_FALSE(CustomPromtEvent::decode(text + ' '));
  EXPECT_TRUE(longest->agrees());
  EXPECT_LT(longest->description().size(), 300u);
  EXPECT_THAT(longest->description(), HasSubstr("\xc3\xa9\"..."));
  const auto lines = CustomPromtEvent::decode(R"({"event":"a\nb"})");
  EXPECT_THAT(lines->description(), Not(HasSubstr("\n")));
}

TEST(MessageText, OnlyATextIsTaken) {
  EXPECT_EQ(messageText(R"({"event":"ok"})", 100), R"({"event":"ok"})");
  EXPECT_EQ(messageText(JSONAny::Dictionary{{"event", "ok"}}, 100), "{\n    event = \"ok\";\n}");
  EXPECT_EQ(messageText(JSONAny::List{1, 2.5, true, JSONNull{}}, 100),
            "(\n    1,\n    2.5,\n    1,\n    <null>,\n)");
  for (const JSONAny& hostile : {JSONAny(JSONAny::Dictionary{{R"("event":"ok","x":")", "y"}}),
                                 JSONAny(JSONAny::Dictionary{{R"("event":"ok"}//)", R"(,"z":")"}}),
                                 JSONAny(JSONAny::List{R"({"event":"ok"})"})}) {
    EXPECT_FALSE(CustomPromtEvent::decode(messageText(hostile, 1000)));
  }
  const JSONAny huge(JSONAny::List(20'000, JSONAny(std::string(100, 'x'))));
  EXPECT_LT(messageText(huge, 1000).size(), 3000u);
}

}  // namespace
}  // namespace VorselKelp
