#include "VorselKelpPosix/LockFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <thread>
#include <utility>

namespace VorselKelp::posix {
namespace {

class HeldFile final : public platform::FileLock {
 public:
  explicit HeldFile(int descriptor) : descriptor_(descriptor) {}
  ~HeldFile() override { ::close(descriptor_); }
  HeldFile(const HeldFile&) = delete;
  HeldFile& operator=(const HeldFile&) = delete;

 private:
  int descriptor_;
};

// Most are held for less than a millisecond.
constexpr std::chrono::microseconds shortestPause(50);
constexpr std::chrono::microseconds longestPause(1000);

/// flock has no time limit of its own, so with one it is asked again and again.
bool takeLock(int descriptor, std::optional<std::chrono::milliseconds> patience) {
  const auto start = std::chrono::steady_clock::now();
  std::chrono::microseconds pause = shortestPause;
  while (::flock(descriptor, patience ? LOCK_EX | LOCK_NB : LOCK_EX) != 0) {
    if (errno == EINTR) continue;
    if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() - start > *patience) return false;
    std::this_thread::sleep_for(std::exchange(pause, std::min(pause * 2, longestPause)));
  }
  return true;
}

}  // namespace

Result<std::unique_ptr<platform::FileLock>> lockFile(const std::string& path,
                                                     std::optional<std::chrono::milliseconds> patience) {
  const auto failure = [&path] {
    const char* reason = errno == EWOULDBLOCK ? "another process keeps it locked" : std::strerror(errno);
    return Error{path + ": " + reason, errno};
  };
  const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (descriptor < 0) return failure();
  std::unique_ptr<platform::FileLock> held = std::make_unique<HeldFile>(descriptor);
  if (!takeLock(descriptor, patience)) return failure();
  return held;
}

}  // namespace VorselKelp::posix
