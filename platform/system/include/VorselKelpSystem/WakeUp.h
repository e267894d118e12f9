#pragma once

#include <functional>
#include <memory>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/MainQueue.h"

namespace VorselKelp::system {

/// Calls back at one time of the wall clock. Any thread; the call comes on the main thread.
class WakeUp {
 public:
  virtual ~WakeUp() = default;
  /// Replaces the time that was set before. `due` is called once, when the time (seconds since 1970) has
  /// come, at once when it has passed; and early when the clock was set meanwhile, for then whoever waits has
  /// to look anew.
  virtual void at(double time, std::function<void()> due) = 0;
  /// Neither the call that was to come comes, nor one that is on its way.
  virtual void cancel() = 0;
};

/// A wake-up by the machine's clock, which holds after a sleep of the machine and a jump of the clock; it
/// wakes no machine. A thread of its own waits, and ends with the object. An error when the system has no
/// timer to give.
VORSELKELP_API Result<std::shared_ptr<WakeUp>> makeWakeUp(std::shared_ptr<platform::MainQueue> mainQueue);

}  // namespace VorselKelp::system
