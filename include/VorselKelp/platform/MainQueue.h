#pragma once

#include "VorselKelp/platform/UniqueFunction.h"

namespace VorselKelp::platform {

/// The queue of the thread on which the application, its screens and its life-cycle events run.
class MainQueue {
 public:
  virtual ~MainQueue() = default;

  /// Appends `work`; it runs on the main thread, after everything appended before it and never inside this
  /// call. Any thread. Work that is still waiting when the queue is destroyed is dropped unrun.
  virtual void async(UniqueFunction<void()> work) = 0;

  /// The same, no earlier than `seconds` from now (a value below 0, or not a number, counts as 0).
  virtual void asyncAfter(double seconds, UniqueFunction<void()> work) = 0;
};

}  // namespace VorselKelp::platform
