#pragma once

#include <string>
#include <vector>

#include "core/CoreContext.h"

namespace VorselKelp {

/// Removes the delivered notifications with this tag from the notification centre, and answers which. Outside
/// a transaction, and before their successor takes the tag: whoever is killed in between leaves nothing on
/// the screen that nobody remembers.
std::vector<std::string> removeTagged(CoreContext& context, const std::string& tag);

/// Remembers that `identifier` is now the notification with this tag. Answers those that carried it before,
/// which may be others than were removed when another process has just delivered one.
[[nodiscard]] std::vector<std::string> takeOverTag(CoreContext& context, const std::string& tag,
                                                   const std::string& identifier);

}  // namespace VorselKelp
