#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "json/Decoder.h"
#include "json/Encoder.h"

namespace VorselKelp {
namespace {

struct Leaf {
  std::int64_t number = 0;
  std::optional<std::string> name;
};

struct Tree {
  std::string title;
  std::optional<bool> flag;
  std::optional<std::vector<Leaf>> leaves;
  std::optional<std::map<std::string, std::string>> words;
  std::optional<std::string> unsent;
};

}  // namespace

namespace json {
template <>
struct KeyTable<Leaf> {
  static constexpr auto keys = std::tuple{key("n", &Leaf::number), key("name", &Leaf::name)};
};
template <>
struct KeyTable<Tree> {
  static constexpr auto keys = std::tuple{key("title", &Tree::title), key("flag", &Tree::flag),
                                          key("leaves", &Tree::leaves), key("words", &Tree::words)};
};
}  // namespace json

namespace {

Result<Tree> decodeTree(std::string_view text) {
  return json::decode<Tree>(text);
}

TEST(Records, DecodeByTheirTable) {
  const auto tree = decodeTree(
      "{\"words\":{\"b\":\"2\",\"a\":\"1\"},\"unknown\":[{}],\"leaves\":[{\"n\":1},{\"n\":-2,\"name\":\"x\"}]"
      ","
      "\"flag\":null,\"unsent\":\"s\",\"title\":\"t\"}");
  ASSERT_TRUE(tree) << tree.error().description;
  EXPECT_FALSE(tree->flag);
  EXPECT_FALSE(tree->unsent);
  ASSERT_EQ(tree->leaves->size(), 2u);
  EXPECT_EQ(tree->leaves->at(1).name, "x");
  EXPECT_EQ(*json::encode(*tree),
            "{\"title\":\"t\",\"leaves\":[{\"n\":1},{\"n\":-2,\"name\":\"x\"}],\"words\":{\"a\":\"1\",\"b\":"
            "\"2\"}}");
}

TEST(Records, ErrorsNameThePath) {
  const std::pair<const char*, const char*> cases[] = {
      {"{}", "title: missing"},
      {"{\"title\":null}", "title: expected text, found null"},
      {"{\"title\":\"t\",\"flag\":1}", "flag: expected boolean, found number"},
      {"{\"title\":\"t\",\"leaves\":{}}", "leaves: expected list, found object"},
      {"{\"title\":\"t\",\"leaves\":[{\"n\":1},{\"name\":\"x\"}]}", "leaves[1].n: missing"},
      {"{\"title\":\"t\",\"leaves\":[{\"n\":1.5}]}", "leaves[0].n: expected 64-bit integer, found number"},
      {"{\"title\":\"t\",\"leaves\":[{\"n\":9223372036854775808}]}",
       "leaves[0].n: expected 64-bit integer, found number"},
      {"{\"title\":\"t\",\"leaves\":[{\"n\":true}]}", "leaves[0].n: expected 64-bit integer, found boolean"},
      {"{\"title\":\"t\",\"leaves\":[null]}", "leaves[0]: expected object, found null"},
      {"{\"title\":\"t\",\"words\":{\"a\":[]}}", "words.a: expected text, found list"},
      {"[]", "expected object, found list"},
  };
  for (const auto& [text, error] : cases) {
    const auto tree = decodeTree(text);
    ASSERT_FALSE(tree) << text;
    EXPECT_EQ(tree.error().description, error) << text;
  }
}

TEST(Records, ATextThatIsNotUtf8HasNoForm) {
  Tree tree;
  tree.title = "\xff";
  EXPECT_FALSE(json::encode(tree));
  tree.title = "t";
  tree.words.emplace().emplace("\xff", "");
  EXPECT_FALSE(json::encode(tree));
}

}  // namespace
}  // namespace VorselKelp
