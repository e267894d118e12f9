#include "notifications/Patience.h"

#include <cerrno>
#include <thread>

#include "VorselKelpPosix/LockFile.h"

namespace VorselKelp::system {
namespace {

constexpr auto napTime = std::chrono::milliseconds(2);
constexpr int mostNaps = 5000;

}  // namespace

bool Patience::nap(int attempt) const {
  if (ended_ || attempt >= mostNaps) return false;
  std::this_thread::sleep_for(napTime);
  return true;
}

Result<std::unique_ptr<platform::FileLock>> Patience::lock(const std::string& path) const {
  for (int attempt = 0;; ++attempt) {
    auto lock = posix::lockFile(path, std::chrono::milliseconds(0));
    if (lock || lock.error().code != EWOULDBLOCK || !nap(attempt)) return lock;
  }
}

}  // namespace VorselKelp::system
