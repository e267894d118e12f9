#include "prompt/NotificationPromtHelper.h"

#include "base/Text.h"

namespace VorselKelp {

std::string NotificationPromtHelper::configurationScript() const {
  const auto stored = storageManger->text(StorageKey::autoConfiguration).value_or("");
  return replaceAll(withoutBackslashes(stored), "<", "\\u003c");
}

}  // namespace VorselKelp
