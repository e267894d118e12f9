#pragma once

#include <string>

#include "core/CoreContext.h"

namespace VorselKelp {

/// Stores a UTM value under the key with "utm_" in front.
inline void storeUtm(CoreContext& context, const std::string& key, std::string value) {
  context.storage.setTextEntry(StorageKey::utm, "utm_" + key, std::move(value));
}

}  // namespace VorselKelp
