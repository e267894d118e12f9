#pragma once

#include <string>

#include "VorselKelpLinux/LineSink.h"

namespace VorselKelp::linux_platform {

/// Says in one line why a process ends, and answers `status`.
inline int exitWith(const std::string& line, int status) {
  standardErrorLines()(line);
  return status;
}

}  // namespace VorselKelp::linux_platform
