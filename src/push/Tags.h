#pragma once

#include <optional>
#include <string>

#include "core/CoreContext.h"

namespace VorselKelp {

/// Lets a notification take the place of the delivered ones that carry the same tag. Without a tag nothing
/// happens.
void replaceTagged(CoreContext& context, const std::optional<std::string>& tag,
                   const std::string& identifier);

}  // namespace VorselKelp
