#pragma once

#include <functional>
#include <memory>

#include "VorselKelp/platform/Clock.h"

namespace VorselKelp::simulator {

/// The machine's clock moved by what `offset` answers, in seconds, at each reading. Waits are the machine's:
/// moving the clock ends none. Any thread, if `offset` bears that.
std::shared_ptr<platform::Clock> makeMovableClock(std::function<double()> offset);

}  // namespace VorselKelp::simulator
