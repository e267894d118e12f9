#include "phone/Progress.h"

#include <unistd.h>

#include <cstdio>

namespace phone {

Progress::Progress(std::string what, bool quiet)
    : what_(std::move(what)), visible_(!quiet && ::isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
  if (shown_ > 1) std::fputs("\r\033[K", stderr);
}

void Progress::tick() {
  if (!visible_) return;
  const auto passed = std::chrono::steady_clock::now() - start_;
  const long seconds = std::chrono::duration_cast<std::chrono::seconds>(passed).count();
  if (seconds <= shown_) return;
  shown_ = seconds;
  std::fprintf(stderr, "\r\033[K%s (%ld s)", what_.c_str(), seconds);
}

}  // namespace phone
