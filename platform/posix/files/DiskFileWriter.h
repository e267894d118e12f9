#pragma once

#include <memory>
#include <string>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/FileManager.h"

namespace VorselKelp::posix {

/// Writes through a file of a passing name in `folder`, which is made when missing. The file's mode is 0600.
Result<std::unique_ptr<platform::FileWriter>> makeDiskWriter(const std::string& folder);

}  // namespace VorselKelp::posix
