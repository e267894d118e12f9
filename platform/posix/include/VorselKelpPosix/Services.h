#pragma once

#include <functional>
#include <memory>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Platform.h"

namespace VorselKelp::posix {

/// The system's clock moved by what `offset` answers (seconds, asked once, when the time is first read).
VORSELKELP_API std::shared_ptr<platform::Clock> makeClock(std::function<double()> offset);

VORSELKELP_API std::shared_ptr<platform::Random> makeRandom();

/// Writes each text and a line feed to `descriptor` with one write. The descriptor stays the caller's.
VORSELKELP_API std::shared_ptr<platform::Console> makeConsole(int descriptor);

}  // namespace VorselKelp::posix
