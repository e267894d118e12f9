#include "json/Outline.h"

#include <algorithm>
#include <set>

#include "VorselKelp/JSONAny.h"

namespace VorselKelp::json {
namespace {

/// One list or object that is open.
struct Level {
  bool isObject = false;
  bool awaitsKey = false;
  std::set<std::string, std::less<>> keys{};
  std::string key{};      ///< of an object: the one read last
  std::size_t index = 0;  ///< of a list
};

std::string pathOf(const std::vector<Level>& levels) {
  std::string path;
  for (const auto& level : levels) {
    if (!level.isObject) {
      path += '[' + std::to_string(level.index) + ']';
    } else {
      path += (path.empty() ? "" : ".") + level.key;
    }
  }
  return path;
}

/// How many bytes the text in quotation marks has that `json` begins with, marks included.
std::size_t lengthOfText(std::string_view json) {
  std::size_t at = 1;
  while (at < json.size() && json[at] != '"') at += json[at] == '\\' ? 2 : 1;
  return std::min(at + 1, json.size());
}

std::string unescaped(std::string_view json) {
  if (json.find('\\') == std::string_view::npos) return std::string(json.substr(1, json.size() - 2));
  const auto text = JSONAny::decode(json);
  const auto* plain = text ? text->as<std::string>() : nullptr;
  return plain ? *plain : std::string();
}

/// Goes through a JSON text. `onOpen` is told that a list or an object begins, and answers whether to go on;
/// `onKey` is told of a key that its object has had.
template <class OnOpen, class OnKey>
void walk(std::string_view json, OnOpen onOpen, OnKey onKey) {
  std::vector<Level> levels;
  while (!json.empty()) {
    const char c = json.front();
    const std::size_t length = c == '"' ? lengthOfText(json) : 1;
    if (c == '{' || c == '[') {
      if (!onOpen(levels)) return;
      levels.push_back({c == '{', c == '{'});
    } else if (levels.empty()) {
      // between texts there is nothing to note
    } else if (c == '}' || c == ']') {
      levels.pop_back();
    } else if (c == ',') {
      levels.back().awaitsKey = levels.back().isObject;
      ++levels.back().index;
    } else if (c == '"' && levels.back().awaitsKey) {
      auto& level = levels.back();
      level.awaitsKey = false;
      level.key = unescaped(json.substr(0, length));
      if (!level.keys.insert(level.key).second) onKey(levels);
    }
    json.remove_prefix(length);
  }
}

}  // namespace

std::vector<std::string> duplicateKeys(std::string_view text) {
  std::vector<std::string> paths;
  walk(
      text, [](const auto&) { return true; },
      [&](const auto& levels) {
        auto path = pathOf(levels);
        if (std::ranges::find(paths, path) == paths.end()) paths.push_back(std::move(path));
      });
  return paths;
}

std::optional<std::string> placeBeyond(std::string_view text, std::size_t most) {
  std::optional<std::string> path;
  walk(
      text,
      [&](const auto& levels) {
        if (levels.size() >= most) path = pathOf(levels);
        return !path;
      },
      [](const auto&) {});
  return path;
}

}  // namespace VorselKelp::json
