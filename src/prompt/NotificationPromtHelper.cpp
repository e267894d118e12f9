#include "prompt/NotificationPromtHelper.h"

#include "base/Text.h"
#include "json/Document.h"
#include "json/Shallow.h"

namespace VorselKelp {

std::string NotificationPromtHelper::configurationScript() const {
  return replaceAll(storedConfiguration(), "<", "\\u003c");
}

Status NotificationPromtHelper::check() const {
  constexpr std::size_t levelsRead = 32;  // what lies deeper has been a document once
  const auto stored = storedConfiguration();
  if (stored.empty()) return Done{};
  const auto document = json::Document::parse(json::shallow(stored, levelsRead));
  return document ? Status(Done{}) : Status(document.error());
}

std::string NotificationPromtHelper::storedConfiguration() const {
  return withoutBackslashes(storageManger->text(StorageKey::autoConfiguration).value_or(""));
}

}  // namespace VorselKelp
