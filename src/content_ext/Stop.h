#pragma once

#include <string>

#include "base/FatalError.h"

namespace VorselKelp {

/// Ends the content extension's process: it can't show what it was given, and the system then shows the plain
/// notification.
[[noreturn]] inline void stopCarousel(const std::string& what) {
  fatalError("VorselKelp/VorselNotificationUI: " + what);
}

}  // namespace VorselKelp
