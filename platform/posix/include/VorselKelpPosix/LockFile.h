#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/FileManager.h"

namespace VorselKelp::posix {

/// Takes the lock that the file stands for, against other processes and other threads alike, and makes the
/// file when it is missing; its folder must exist. Waits for ever, or at most for `patience`.
VORSELKELP_API Result<std::unique_ptr<platform::FileLock>> lockFile(
    const std::string& path, std::optional<std::chrono::milliseconds> patience = {});

}  // namespace VorselKelp::posix
