#pragma once

#include <initializer_list>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace VorselKelp::lint_tests {

/// Payloads as senders write them, with what they get wrong: the same ones for the same seed.
class RandomPayload {
 public:
  explicit RandomPayload(unsigned seed) : engine_(seed) {}

  std::string next() {
    std::string members;
    if (!oneIn(8)) add(members, "aps", aps());
    if (oneIn(2)) add(members, "p", oneIn(12) ? oddity() : pages());
    if (!oneIn(3)) add(members, "isMultiple", oneIn(8) ? oddity() : pick({"true", "true", "false"}));
    return "{" + members + "}";
  }

 private:
  bool oneIn(unsigned n) { return engine_() % n == 0; }
  std::string pick(const std::vector<std::string>& choices) { return choices[engine_() % choices.size()]; }
  static void add(std::string& members, const std::string& key, const std::string& value) {
    members += (members.empty() ? "\"" : ",\"") + key + "\":" + value;
  }
  template <class Make>
  void maybe(std::string& members, const std::string& key, Make make) {
    if (oneIn(2)) add(members, key, oneIn(40) ? oddity() : make());
  }
  template <class Make>
  std::string list(unsigned most, Make make) {
    std::string elements;
    for (auto count = engine_() % (most + 1); count > 0; --count)
      elements += (elements.empty() ? "" : ",") + make();
    return "[" + elements + "]";
  }

  std::string oddity() { return pick({"null", "5", "\"text\"", "[]", "{}", "true", "1.5"}); }
  std::string text() {
    return pick(
        {R"("Storm")", R"("")", R"("Caf\\u00e9")", R"("é \\u00e9")", R"("a ${name}")", R"("C:\\temp")"});
  }
  std::string url() {
    return pick({R"("https://a.example/x?b=${VA_BACID}")", R"("HTTPS://a.example/y")",
                 R"("http://a.example/ü{|}")", R"("myapp://item/${VA_BACID}")", R"("javascript:x")",
                 R"("file:///etc/passwd")", R"("relative/path")", R"("https:article")", R"("")",
                 R"(" https://a.example")", R"("https://münchen.example")", R"("ftp://a.example/z")",
                 R"("https://a.example/${other}")"});
  }
  std::string picture() {
    return oneIn(4) ? url() : pick({R"("https://a.example/1.png")", R"("https://a.example/2.png")"});
  }
  std::string urls() {
    return list(3, [this] { return url(); });
  }
  std::string action() {
    std::string members;
    add(members, "action",
        pick({R"("yes")", R"("no")", R"("more")", R"("")",
              R"("com.apple.UNNotificationDefaultActionIdentifier")"}));
    if (!oneIn(20)) add(members, "title", pick({R"("Yes")", R"("NO")", R"("")"}));
    maybe(members, "url", [this] { return url(); });
    return "{" + members + "}";
  }
  std::string conversion() {
    std::string members;
    if (!oneIn(20)) add(members, "url", url());
    if (!oneIn(4)) add(members, "t", urls());
    return "{" + members + "}";
  }
  std::string message(bool ofCarousel) {
    std::string members;
    maybe(members, "body", [this] { return text(); });
    maybe(members, "sound", [this] { return pick({R"("ping")", R"("ping.wav")", R"("")"}); });
    maybe(members, "silent", [this] { return pick({"true", "false"}); });
    if (oneIn(4)) add(members, "cl", pick({"0", "1", "1.0", "1e0", "9223372036854775808", "-0.0"}));
    if (oneIn(3)) add(members, "tag", text());
    if (oneIn(4)) add(members, "ap", picture());
    if (ofCarousel ? !oneIn(8) : oneIn(2)) add(members, "image", picture());
    maybe(members, "actions", [this] { return list(3, [this] { return action(); }); });
    if (ofCarousel ? !oneIn(5) : oneIn(2)) add(members, "data", conversion());
    return "{" + members + "}";
  }
  std::string pages() {
    return list(3, [this] {
      std::string members;
      maybe(members, "t", [this] { return text(); });
      maybe(members, "i", [this] { return urls(); });
      if (!oneIn(20)) add(members, "o", message(true));
      return "{" + members + "}";
    });
  }
  std::string alert() {
    std::string members;
    if (!oneIn(12)) add(members, "title", text());
    if (!oneIn(4)) add(members, "n", message(false));
    maybe(members, "adex", [this] { return pick({"true", "false"}); });
    maybe(members, "e", [this] { return pick({R"("https://a.example/ad?x=1")", url()}); });
    maybe(members, "v", [this] { return url(); });
    maybe(members, "t", [this] { return urls(); });
    return "{" + members + "}";
  }
  std::string regions() {
    return list(2, [this] {
      return pick({R"({"id":"g","c":["1"]})", R"({"id":"b","ib":"i","c":[]})", R"({"id":"b","r":"x"})", "5"});
    });
  }
  std::string administrative() {
    std::string members;
    maybe(members, "gl", [this] { return regions(); });
    maybe(members, "bl", [this] { return regions(); });
    return R"({"content-available":1,"alert":{)" + members + "}}";
  }
  std::string aps() {
    if (oneIn(8)) return administrative();
    std::string members;
    if (oneIn(8)) add(members, "content-available", pick({"1", "1.0", "0", "true"}));
    if (!oneIn(5)) add(members, "mutable-content", pick({"1", "1", "1.0", "1", "0", "\"1\"", "true"}));
    if (!oneIn(10)) add(members, "alert", oneIn(12) ? oddity() : alert());
    return "{" + members + "}";
  }

  std::mt19937 engine_;
};

}  // namespace VorselKelp::lint_tests
