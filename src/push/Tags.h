#pragma once

#include <string>
#include <vector>

#include "core/CoreContext.h"

namespace VorselKelp {

/// Remembers that `identifier` is now the notification with this tag. Answers the delivered ones that carried
/// it before: they are to be removed from the notification centre, after any transaction that this is part
/// of.
[[nodiscard]] std::vector<std::string> takeOverTag(CoreContext& context, const std::string& tag,
                                                   const std::string& identifier);

}  // namespace VorselKelp
