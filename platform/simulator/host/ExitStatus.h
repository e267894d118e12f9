#pragma once

#include <string>

#include "VorselKelpPosix/LineSink.h"

namespace VorselKelp::simulator {

/// Says in one line why a process ends, and answers `status`.
inline int exitWith(const std::string& line, int status) {
  posix::standardErrorLines()(line);
  return status;
}

}  // namespace VorselKelp::simulator
