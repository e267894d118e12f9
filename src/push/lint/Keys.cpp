#include "push/lint/Keys.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "VorselKelp/PayloadLint.h"
#include "base/Text.h"
#include "json/Document.h"

namespace VorselKelp {
namespace {

namespace bj = boost::json;

/// What systems read beside the library's own keys.
LintLines systemKeys(const std::string& path) {
  if (path == "aps")
    return {"badge",
            "sound",
            "category",
            "thread-id",
            "content-available",
            "target-content-id",
            "interruption-level",
            "relevance-score",
            "filter-criteria"};
  if (path == "aps.alert")
    return {"subtitle",          "body",
            "launch-image",      "title-loc-key",
            "title-loc-args",    "subtitle-loc-key",
            "subtitle-loc-args", "loc-key",
            "loc-args",          "summary-arg",
            "summary-arg-count"};
  return {};
}

/// How many letters are wrong, missing, too many, or have changed places with their neighbour.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before, last(b.size() + 1), row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before = std::exchange(last, row);
  }
  return last[b.size()];
}

/// Short keys are near in letter case alone: any letter is as near to another.
bool isNear(const std::string& unknown, const std::string& known) {
  const auto a = lowerCased(unknown), b = lowerCased(known);
  if (a == b) return true;
  const std::size_t allowed = b.size() < 3 ? 0 : b.size() < 6 ? 1 : 2;
  const auto difference = std::max(a.size(), b.size()) - std::min(a.size(), b.size());
  return difference <= allowed && distance(a, b) <= allowed;
}

/// A schema without what says that the value may be null as well.
const bj::object& plain(const bj::object& schema) {
  const auto* kinds = schema.if_contains("anyOf");
  return kinds ? kinds->get_array().front().get_object() : schema;
}

void warnOfKey(LintLines& warnings, const bj::object& object, const LintLines& known, const std::string& key,
               const std::string& where) {
  if (std::ranges::find(known, key) != known.end()) return;
  const auto near = std::ranges::find_if(
      known, [&](const std::string& other) { return isNear(key, other) && !object.contains(other); });
  if (near != known.end())
    warnings.push_back(where + ": nothing reads this key; is \"" + *near + "\" meant?");
}

void visit(LintLines& warnings, const bj::object& object, const bj::object& schema, const std::string& path);

void visit(LintLines& warnings, const bj::value& value, const bj::object& described,
           const std::string& path) {
  const auto& schema = plain(described);
  if (const auto* object = value.if_object()) return visit(warnings, *object, schema, path);
  const auto* items = schema.if_contains("items");
  const auto* list = value.if_array();
  for (std::size_t i = 0; items && list && i < list->size(); ++i)
    visit(warnings, (*list)[i], items->get_object(), path + "[" + std::to_string(i) + "]");
}

void visit(LintLines& warnings, const bj::object& object, const bj::object& schema, const std::string& path) {
  const auto* properties = schema.if_contains("properties");
  if (!properties) return;
  auto known = systemKeys(path);
  for (const auto& property : properties->get_object()) known.emplace_back(property.key());
  for (const auto& member : object) {
    const std::string key(member.key());
    const std::string where = path.empty() ? key : path + "." + key;
    if (const auto* inner = properties->get_object().if_contains(key)) {
      visit(warnings, member.value(), inner->get_object(), where);
    } else {
      warnOfKey(warnings, object, known, key, where);
    }
  }
}

}  // namespace

void warnOfUnknownKeys(LintLines& warnings, const boost::json::object& root) {
  const auto schema = json::Document::parse(*payloadSchema("push"));
  visit(warnings, root, schema->root().get_object(), "");
}

}  // namespace VorselKelp
