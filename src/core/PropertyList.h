#pragma once

#include <string>
#include <string_view>

#include "core/CoreContext.h"

namespace VorselKelp {

/// The API key that the main bundle names; a bundle without one stops the process, naming `caller`.
[[nodiscard]] std::string requiredApiKey(const CoreContext& context, std::string_view caller);

}  // namespace VorselKelp
