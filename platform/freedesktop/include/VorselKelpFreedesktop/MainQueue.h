#pragma once

#include <memory>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/MainQueue.h"

struct _GMainContext;  // GLib's GMainContext

namespace VorselKelp::freedesktop {

/// The main queue of a process that runs GLib's main loop. Work runs at GLib's default priority, one piece at
/// a time between what else the loop has to do, also in a loop within a piece of work.
class GlibMainQueue : public platform::MainQueue {
 public:
  /// Drops what waits, unrun; what is appended from now on is dropped at once. Any thread, a piece of work's
  /// own too. To be called when the application leaves its loop: waiting work may hold what has to be closed
  /// by then, the queue itself included.
  virtual void close() = 0;
};

/// Work runs on the thread that runs `context`; null: the default one, which is the main thread's. The
/// context is kept as long as the queue. Times are those of GLib's monotonic clock.
[[nodiscard]] VORSELKELP_API std::shared_ptr<GlibMainQueue> makeMainQueue(_GMainContext* context = nullptr);

}  // namespace VorselKelp::freedesktop
