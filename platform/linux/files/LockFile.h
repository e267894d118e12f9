#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/FileManager.h"

namespace VorselKelp::linux_platform {

/// Takes the lock that the file stands for, against other processes and other threads alike, and makes the
/// file when it is missing; its folder must exist. Waits for ever, or at most for `patience`.
Result<std::unique_ptr<platform::FileLock>> lockFile(const std::string& path,
                                                     std::optional<std::chrono::milliseconds> patience = {});

}  // namespace VorselKelp::linux_platform
