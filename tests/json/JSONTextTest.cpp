#include "VorselKelp/JSONText.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "json/JSONFault.h"

namespace VorselKelp {
namespace {

TEST(JSONText, SaysWhereItStopsAndWhatBelongsThere) {
  const std::pair<std::string, const char*> texts[] = {
      {"", "line 1, column 1: expected a value, found the end"},
      {"{\"a\": 1,\n}", "line 2, column 1: expected a key in double quotes after the \",\", found \"}\""},
      {"{\r\n  \"é\": 1 \"b\": 2}", "line 2, column 10: expected \",\" or \"}\", found a text"},
      {"{'a': 1}", "line 1, column 2: expected a key in double quotes, or \"}\", found \"'\""},
      {"[1 é]", "line 1, column 4: expected \",\" or \"]\", found \"é\""},
      {"[1, 2", "line 1, column 6: expected \",\" or \"]\", found the end"},
      {"{\"a\" 1}", "line 1, column 6: expected \":\" and a value after the key, found \"1\""},
      {"\xEF\xBB\xBF[True]", "line 1, column 2: expected a value, found \"T\""},
      {"[1] x", "line 1, column 5: expected the end of the text, found \"x\""},
      {"[1.]", "line 1, column 4: expected a digit after the decimal point, found \"]\""},
      {"[\"a", "line 1, column 2: a text without its closing quote"},
      {"[\"C:\\dir\"]", "line 1, column 5: an escape that JSON does not have; a backslash is written twice"},
      {"[\"\\ud83d\"]", "line 1, column 3: one half of a surrogate pair without the other"},
      {"[\"\\udfff\"]", "line 1, column 3: one half of a surrogate pair without the other"},
      {"[\"\xff\"]", "line 1, column 2: a text that is not UTF-8"},
      {std::string(65, '['), "line 1, column 65: more than 64 levels of objects and lists"},
      {"[1e999]", "a number in it is out of range"}};
  for (const auto& [text, told] : texts) EXPECT_EQ(readJSONText(text).error().description, told);
}

TEST(JSONText, FindsAFaultInWhateverDoesNotDecode) {
  const std::string whole =
      R"({"a": [1, -0.5e+7, true, null, "t\"\u00e9\ud83d\ude00"], "b": {"c": false}, "d": []} )";
  ASSERT_EQ(json::findJSONFault(whole), std::nullopt);
  const auto check = [](const std::string& text) {
    EXPECT_EQ(JSONAny::decode(text).ok(), !json::findJSONFault(text)) << text;
  };
  for (std::size_t i = 0; i < whole.size(); ++i) {
    check(whole.substr(0, i));
    for (const char c : std::string_view("\"\\{}[],:0.-eu \n\xc3")) {
      auto changed = whole;
      changed[i] = c;
      check(changed);
      check(changed.insert(i, 1, c));
    }
  }
}

}  // namespace
}  // namespace VorselKelp
