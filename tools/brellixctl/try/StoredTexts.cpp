#include "brellixctl/try/StoredTexts.h"

#include "VorselKelpSystem/NotificationRecords.h"

namespace brellixctl {

using VorselKelp::JSONAny;
namespace system = VorselKelp::system;

namespace {

constexpr const char* badgeKey = "vs_badge";

/// Inner keys stand behind a slash.
void collectTexts(StoredTexts& texts, const std::string& name, const JSONAny& value, int level = 0) {
  if (const auto* entries = value.as<JSONAny::Dictionary>()) {
    for (const auto& [key, inner] : *entries)
      collectTexts(texts, name + (level == 0 ? " " : "/") + key, inner, level + 1);
  } else if (const auto* list = value.as<JSONAny::List>()) {
    for (const auto& item : *list) collectTexts(texts, name, item, level);
  } else {
    const auto* text = value.as<std::string>();
    texts[name].push_back(text != nullptr ? *text : system::encodeLossy(value));
  }
}

}  // namespace

StoredTexts foretoldTexts(const std::vector<VorselKelp::PayloadLint::Stored>& stored) {
  StoredTexts texts;
  for (const auto& [key, entry, text] : stored)
    texts[key + (entry.empty() ? "" : " " + entry)].push_back(text);
  return texts;
}

StoredTexts changedTexts(const JSONAny& before, const JSONAny& after) {
  StoredTexts texts;
  const auto* values = after.as<JSONAny::Dictionary>();
  if (values == nullptr) return texts;
  for (const auto& [key, value] : *values) {
    const auto* old = before.find(key);
    if (key != badgeKey && (old == nullptr || *old != value)) collectTexts(texts, key, value);
  }
  return texts;
}

std::set<std::string> namesOf(const StoredTexts& texts) {
  std::set<std::string> names;
  for (const auto& [name, each] : texts) names.insert(name);
  return names;
}

std::vector<std::string> textsOf(const StoredTexts& texts, const std::string& name) {
  const auto found = texts.find(name);
  return found != texts.end() ? found->second : std::vector<std::string>();
}

}  // namespace brellixctl
