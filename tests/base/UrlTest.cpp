#include "base/Url.h"

#include <gtest/gtest.h>

#include <string>

namespace VorselKelp {
namespace {

using namespace std::string_literals;

TEST(Url, ParsesAndKnowsWhatARequestCanGoTo) {
  struct Case {
    std::string text;
    bool parses;
    bool web;
  };
  const Case cases[] = {
      {"https://a.example/p?q=1&r#f", true, true},
      {"http://127.0.0.1:8080", true, true},
      {"http://[::1]/", true, true},
      {"HTTPS://A.example/", true, true},
      {"https://a.example/%20x", true, true},
      {"https:///path", true, false},
      {"http:opaque", true, false},
      {"file:///etc/passwd", true, false},
      {"myapp://item/7", true, false},
      {"mailto:a@b.example", true, false},
      {"relative/path", true, false},
      {"//host/path", true, false},
      {"", false, false},
      {" ", false, false},
      {"https://a.example/a b", false, false},
      {" https://a.example/", false, false},
      {"https://a.example/\r\nHost: evil", false, false},
      {"https://a.example/\0"s, false, false},
      {"https://a.example/\u00e9", false, false},
      {"https://a.example/%zz", false, false},
  };
  for (const auto& c : cases) {
    const auto url = parseUrl(c.text);
    EXPECT_EQ(url.has_value(), c.parses) << c.text;
    EXPECT_EQ(url && url->isWeb(), c.web) << c.text;
    EXPECT_EQ(url ? url->text : c.text, c.text);
  }
}

TEST(Url, AppendsOneComponent) {
  struct Case {
    const char* base;
    const char* component;
    const char* url;
  };
  const Case cases[] = {
      {"https://tag.example/tag", "k-1.json", "https://tag.example/tag/k-1.json"},
      {"https://tag.example/tag/", "k.json", "https://tag.example/tag/k.json"},
      {"https://tag.example", "k.json", "https://tag.example/k.json"},
      {"https://tag.example/tag?v=2", "k.json", "https://tag.example/tag/k.json?v=2"},
      {"https://tag.example/tag", "a b?c#d.json", "https://tag.example/tag/a%20b%3Fc%23d.json"},
  };
  for (const auto& c : cases) EXPECT_EQ(appendingPathComponent(c.base, c.component), c.url);
  EXPECT_FALSE(appendingPathComponent("not a url", "k.json"));
  EXPECT_EQ(lastPathComponent("https://a.example/b/c%20d.png?e=/f"), "c d.png");
  EXPECT_EQ(lastPathComponent("https://a.example"), "");
}

}  // namespace
}  // namespace VorselKelp
