#pragma once

#include <string>

#include "core/CoreContext.h"

namespace VorselKelp {

/// Lets the notification `identifier` take the place of those with the same tag: removes them from the
/// notification centre, and runs `store` in the transaction that remembers who has the tag now.
///
/// Removed is first: whoever is killed in between leaves nothing on the screen that nobody remembers. When
/// another process has delivered one meanwhile, that one goes last.
void takeTag(CoreContext& context, const std::string& tag, const std::string& identifier,
             platform::FunctionRef<void()> store);

}  // namespace VorselKelp
