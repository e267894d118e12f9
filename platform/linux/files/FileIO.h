#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "VorselKelp/Result.h"

namespace VorselKelp::linux_platform {

/// What errno says now, about this path.
Error systemError(const std::string& path);

/// An error for what is no absolute path, or has a NUL byte: that would cut it short on its way to the
/// system, and name another file.
Status checkPath(const std::string& path);

/// The folder of an absolute path.
std::string parentOf(const std::string& path);

/// Makes the folder and its missing parents, with access for the owner alone.
Status makeFolders(const std::string& path);

/// The bytes of a regular file of at most `limit` bytes.
Result<std::string> readWholeFile(const std::string& path, std::size_t limit);

/// Makes names just given in the folder survive a power cut, where the file system can.
void syncFolder(const std::string& path);

}  // namespace VorselKelp::linux_platform
