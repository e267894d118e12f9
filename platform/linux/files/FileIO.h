#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "VorselKelp/Result.h"

namespace VorselKelp::linux_platform {

/// Makes the folder and its missing parents, with access for the owner alone.
Status makeFolders(const std::string& path);

/// Writes through a file of another name in the same folder, which must exist, and a rename. The file's mode
/// is 0600.
Status replaceFile(const std::string& path, std::string_view bytes);

/// The bytes of a regular file of at most `limit` bytes.
Result<std::string> readWholeFile(const std::string& path, std::size_t limit);

/// Makes names just given in the folder survive a power cut, where the file system can.
void syncFolder(const std::string& path);

}  // namespace VorselKelp::linux_platform
