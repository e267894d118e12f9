#include "VorselKelpPosix/LineSink.h"

#include <unistd.h>

#include <string>

namespace VorselKelp::posix {

LineSink standardErrorLines() {
  return [](std::string_view line) {
    std::string text(line);
    text += '\n';
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, text.data(), text.size());
  };
}

}  // namespace VorselKelp::posix
