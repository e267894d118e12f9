#pragma once

#include <gtk/gtk.h>

#include "VorselKelpPosix/EventLoop.h"

namespace VorselKelp::simulator {

/// Waits in the toolkit's own loop, so that windows live while the process waits for its work.
class GtkWaiter final : public posix::LoopWaiter {
 public:
  void wait(std::chrono::steady_clock::time_point until) override;
  void wake() override { g_main_context_wakeup(nullptr); }
};

}  // namespace VorselKelp::simulator
