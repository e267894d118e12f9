#pragma once

#include <memory>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Platform.h"

namespace VorselKelp::posix {

/// The machine's clock. Waits run on its steady one.
VORSELKELP_API std::shared_ptr<platform::Clock> makeClock();

VORSELKELP_API std::shared_ptr<platform::Random> makeRandom();

/// Writes each text and a line feed to `descriptor` with one write. The descriptor stays the caller's.
VORSELKELP_API std::shared_ptr<platform::Console> makeConsole(int descriptor);

}  // namespace VorselKelp::posix
