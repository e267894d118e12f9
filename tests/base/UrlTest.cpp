#include "base/Url.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace VorselKelp {
namespace {

using namespace std::string_literals;

TEST(Url, FormsWhatARequestCanGoToOutOfWhatPeopleWrite) {
  struct Case {
    std::string text;
    std::optional<std::string> url;
    bool web = false;
  };
  const Case cases[] = {
      {"https://a.example/p?q=1&r#f", "https://a.example/p?q=1&r#f", true},
      {"http://127.0.0.1:8080", "http://127.0.0.1:8080", true},
      {"http://[::1]/", "http://[::1]/", true},
      {"HTTPS://A.example/", "HTTPS://A.example/", true},
      {"https://a.example/%20x%c3%A9", "https://a.example/%20x%c3%A9", true},
      {"https://a.example/a b/\u00e9?\u4e2d=1 2#\u00fc",
       "https://a.example/a%20b/%C3%A9?%E4%B8%AD=1%202#%C3%BC", true},
      {"https://a.example/[]{}|^\"<>\\`", "https://a.example/%5B%5D%7B%7D%7C%5E%22%3C%3E%5C%60", true},
      {"https://a.example?a[]=1#x[#y", "https://a.example?a%5B%5D=1#x%5B%23y", true},
      {"https://a.example/100%&%z1%4", "https://a.example/100%25&%25z1%254", true},
      {"https:///path", "https:///path"},
      {"http:opaque", "http:opaque"},
      {"file:///etc/passwd", "file:///etc/passwd"},
      {"myapp://item/Caf\u00e9 1", "myapp://item/Caf%C3%A9%201"},
      {"mailto:a@b.example?subject=a b", "mailto:a@b.example?subject=a%20b"},
      {"relative path", "relative%20path"},
      {"//host/path", "//host/path"},
      {"", {}},
      {" ", {}},
      {" https://a.example/", {}},
      {"https://a.example/ ", {}},
      {"https://a.example/\r\nHost: evil", {}},
      {"https://a.example/\t", {}},
      {"https://a.example/\x7f", {}},
      {"https://a.example/\0"s, {}},
      {"https://a.example/\xff", {}},
      {"https://no host/", {}},
      {"https://a.example\\x/", {}},
      {"https://caf\u00e9.example/", {}},
      {"https://a.example:port/", {}},
      {"my app:x", {}},
  };
  for (const auto& c : cases) {
    const auto url = parseUrl(c.text);
    EXPECT_EQ(url ? std::optional(url->text) : std::nullopt, c.url) << c.text;
    EXPECT_EQ(url && url->isWeb(), c.web) << c.text;
    EXPECT_TRUE(!url || parseUrl(url->text)->text == url->text) << c.text << ": once is enough";
    EXPECT_EQ(hasForeignHost(c.text), c.text.starts_with("https://caf")) << c.text;
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
      {"https://tag.example/[tag]", "k.json", "https://tag.example/%5Btag%5D/k.json"},
      {"https://tag.example/tag?v=2", "k.json", "https://tag.example/tag/k.json?v=2"},
      {"https://tag.example/tag", "a b?c#d.json", "https://tag.example/tag/a%20b%3Fc%23d.json"},
  };
  for (const auto& c : cases) EXPECT_EQ(appendingPathComponent(c.base, c.component), c.url);
  EXPECT_FALSE(appendingPathComponent("not a url ", "k.json"));
  EXPECT_EQ(lastPathComponent("https://a.example/b/c%20d {1}.png?e=/f"), "c d {1}.png");
  EXPECT_EQ(lastPathComponent("https://a.example"), "");
}

}  // namespace
}  // namespace VorselKelp
