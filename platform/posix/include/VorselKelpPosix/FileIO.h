#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"

namespace VorselKelp::posix {

/// What errno says now, about this path.
VORSELKELP_API Error systemError(const std::string& path);

/// An error for what is no absolute path, or has a NUL byte: that would cut it short on its way to the
/// system, and name another file.
VORSELKELP_API Status checkPath(const std::string& path);

/// The folder of an absolute path.
VORSELKELP_API std::string parentOf(const std::string& path);

/// Makes the folder and its missing parents, with access for the owner alone.
VORSELKELP_API Status makeFolders(const std::string& path);

/// The bytes of a regular file of at most `limit` bytes.
VORSELKELP_API Result<std::string> readWholeFile(const std::string& path, std::size_t limit);

/// Copies a regular file's bytes into a file that must not be there yet, with access for the owner alone.
/// What could not be copied whole is removed again.
VORSELKELP_API Status copyFile(const std::string& source, const std::string& target);

/// Waits until the file's bytes are on the disk, where it can.
VORSELKELP_API void syncFile(const std::string& path);

/// Makes names just given in the folder survive a power cut, where the file system can.
VORSELKELP_API void syncFolder(const std::string& path);

}  // namespace VorselKelp::posix
