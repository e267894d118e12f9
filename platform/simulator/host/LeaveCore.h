#pragma once

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpPosix/EventLoop.h"

namespace VorselKelp::simulator {

/// The process ends: lets the library's core go, so that its stores are closed in good order and their logs
/// do not grow from process to process. Work that waits on the loop would keep it; the session must be closed
/// before, or answers that are still to come do the same.
inline void leaveCore(posix::EventLoop& loop) {
  loop.discard();
  VorselKellp::uninstall();
  loop.discard();
}

}  // namespace VorselKelp::simulator
