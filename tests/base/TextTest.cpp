#include "base/Text.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace VorselKelp {
namespace {

using namespace std::string_literals;

TEST(Text, NonLossyAscii) {
  struct Case {
    const char* text;
    const char* read;
  };
  const Case cases[] = {
      {"", ""},
      {"plain 'ASCII' ~", "plain 'ASCII' ~"},
      {"Caf\\u00e9 \\u4E2D", "Caf\u00e9 \u4e2d"},
      {"\\ud83d\\ude00!", "\U0001F600!"},
      {"caf\\351 \\101\\377", "caf\u00e9 A\u00ff"},
      {"a\\\\u0041", "a\\u0041"},
      {"\\\\\\\\", "\\\\"},
  };
  for (const auto& c : cases) EXPECT_EQ(fromNonLossyAscii(c.text), c.read) << c.text;
  for (const char* broken : {"Caf\u00e9", "\\", "\\n", "\\u12", "\\u12G4", "\\u+123", "\\u-123", "\\ud83d",
                             "\\ud83d\\u0041", "\\ud83d\\ud83d", "\\ude00", "\\12", "\\129", "\\777"})
    EXPECT_FALSE(fromNonLossyAscii(broken)) << broken;
  EXPECT_EQ(fromNonLossyAscii("a\0b\\u0000"s), "a\0b\0"s);
}

TEST(Text, Utf8) {
  for (const char* valid : {"", "a", "\x7f", "\u0080", "\u07ff", "\u0800", "\ud7ff", "\ue000", "\uffff",
                            "\U00010000", "\U0010ffff", "a\u00e9\u4e2d\U0001F600b"})
    EXPECT_TRUE(isValidUtf8(valid)) << valid;
  EXPECT_TRUE(isValidUtf8("\0"s));
  for (const char* broken :
       {"\x80", "\xc0\x80", "\xc1\xbf", "\xc3", "\xc3(", "\xe0\x9f\xbf", "\xed\xa0\x80", "\xe2\x82",
        "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xf0\x9f\x98", "\xf5\x80\x80\x80", "\xff", "ok\xfe"})
    EXPECT_FALSE(isValidUtf8(broken)) << broken;
}

TEST(Text, SafeFileNames) {
  struct Case {
    std::string suggested;
    const char* name;
  };
  const Case cases[] = {
      {"pic.png", "pic.png"},
      {"../../etc/passwd", "passwd"},
      {"..\\..\\boot.ini", "boot.ini"},
      {"a b\n\"c\".png", "a_b__c_.png"},
      {".hidden", "hidden"},
      {"..", "file"},
      {"", "file"},
      {"folder/", "file"},
      {"a\0.png"s, "a_.png"},
      {"\u00e9.gif", "__.gif"},
  };
  for (const auto& c : cases) EXPECT_EQ(safeFileName(c.suggested), c.name) << c.suggested;
  const std::string longName = safeFileName(std::string(500, 'x') + ".jpeg");
  EXPECT_EQ(longName.size(), 64u);
  EXPECT_TRUE(longName.ends_with("x.jpeg"));
  EXPECT_EQ(safeFileName(std::string(100, '.')), "file");
}

TEST(Text, SmallHelpers) {
  const std::pair<double, const char*> numbers[] = {{844, "844.0"},
                                                    {0.1, "0.1"},
                                                    {-2.5, "-2.5"},
                                                    {0, "0.0"},
                                                    {-0.0, "-0.0"},
                                                    {100000, "100000.0"},
                                                    {9007199254740993, "9007199254740992.0"},
                                                    {9999999999999998, "9999999999999998.0"},
                                                    {1e16, "1e+16"},
                                                    {-1.5e300, "-1.5e+300"},
                                                    {0.0001, "0.0001"},
                                                    {0.00012345678901234567, "0.00012345678901234567"},
                                                    {0.00009, "9e-05"}};
  for (const auto& [number, text] : numbers) EXPECT_EQ(decimalText(number), text);
  EXPECT_EQ(replaceAll("${A}-${A}$", "${A}", "${A}x"), "${A}x-${A}x$");
  EXPECT_EQ(replaceAll("", "x", "y"), "");
  EXPECT_EQ(withoutBackslashes("{\\\"a\\\\\":1}\\"), "{\"a\":1}");
  EXPECT_EQ(lowerCased("NO No \u00c9"), "no no \u00c9");
  const std::uint8_t bytes[] = {0x00, 0xAB, 0x0F};
  EXPECT_EQ(hexText(bytes, 3), "00ab0f");
  EXPECT_EQ(hexText(bytes, 0), "");
  std::set<std::uint64_t> hashes;
  for (int i = 0; i < 1000; ++i) hashes.insert(stableHash(std::to_string(i)));
  EXPECT_EQ(hashes.size(), 1000u);
}

}  // namespace
}  // namespace VorselKelp
