#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/FileManager.h"

namespace VorselKelp::posix {

struct FileManagerOptions {
  /// Absolute path of the folder in which each group has a folder of its own. A container's folder is made by
  /// the first write into it.
  std::string containersFolder;
  /// The groups that the device knows.
  std::vector<std::string> groups;
  /// Absolute path of the process's folder for passing files.
  std::string temporaryFolder;
  /// How long lock() waits for another process.
  std::chrono::milliseconds lockPatience{5000};
};

/// Files on disk. A file is replaced through a rename; it is not forced to the disk, so a power cut may lose
/// it.
[[nodiscard]] VORSELKELP_API std::shared_ptr<platform::FileManager> makeFileManager(
    FileManagerOptions options);

}  // namespace VorselKelp::posix
