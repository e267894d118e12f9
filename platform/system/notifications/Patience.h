#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <string>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/FileManager.h"

namespace VorselKelp::system {

/// How long a store waits for what other processes keep locked: ten seconds each time, until it is told to
/// wait no more. Any thread.
class Patience {
 public:
  /// A short nap in a wait, the `attempt`th from 0 on; false, without one, when the patience is over.
  bool nap(int attempt) const;
  /// The lock that the file stands for; its folder must exist.
  Result<std::unique_ptr<platform::FileLock>> lock(const std::string& path) const;
  /// From now on nothing waits, not even what waits already.
  void end() { ended_ = true; }

 private:
  std::atomic<bool> ended_ = false;
};

}  // namespace VorselKelp::system
