#include "base/FatalError.h"

#include <unistd.h>

#include <cstdlib>
#include <string>

namespace VorselKelp {

void fatalError(std::string_view message) {
  std::string line = "Fatal error: ";
  line += message;
  line += '\n';
  // One plain write: the process may be in any state, so no stream and no buffer is trusted.
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line.data(), line.size());
  std::abort();
}

}  // namespace VorselKelp
