#include "VorselKelpLinux/DiskFileManager.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "files/FileIO.h"
#include "files/LockFile.h"
#include "support/SafeName.h"

namespace VorselKelp::linux_platform {
namespace {

/// A NUL byte would cut the path short on its way to the system, and name another file.
Status checkPath(const std::string& path) {
  if (path.empty() || path.front() != '/') return Error{"not an absolute path: \"" + path + "\""};
  if (path.find('\0') != std::string::npos) return Error{"a path with a NUL byte"};
  return Done{};
}

Status makeFolderOf(const std::string& path) {
  return makeFolders(path.substr(0, std::max<std::size_t>(path.rfind('/'), 1)));
}

class DiskFileManager final : public platform::FileManager {
 public:
  explicit DiskFileManager(FileManagerOptions options) : options_(std::move(options)) {}

  std::optional<std::string> containerPath(std::string_view groupId) override {
    if (std::ranges::find(options_.groups, groupId) == options_.groups.end()) return {};
    return options_.containersFolder + "/" + safeName(groupId);
  }

  std::string temporaryDirectory() override {
    // Where it can't be made, the first write into it says why.
    (void)makeFolders(options_.temporaryFolder);
    return options_.temporaryFolder;
  }

  Status writeFile(const std::string& path, std::string_view bytes) override {
    if (const auto checked = checkPath(path); !checked) return checked;
    if (const auto made = makeFolderOf(path); !made) return made;
    return replaceFile(path, bytes);
  }

  Result<std::string> readFile(const std::string& path, std::size_t limit) override {
    if (const auto checked = checkPath(path); !checked) return checked.error();
    return readWholeFile(path, limit);
  }

  bool fileExists(const std::string& path) override {
    return checkPath(path) && ::access(path.c_str(), F_OK) == 0;
  }

  Status removeItem(const std::string& path) override {
    if (const auto checked = checkPath(path); !checked) return checked;
    std::error_code error;
    std::filesystem::remove_all(path, error);
    // A part of the path that is a file means that there is nothing below it.
    if (error && error != std::errc::not_a_directory)
      return Error{path + ": " + error.message(), error.value()};
    return Done{};
  }

  std::unique_ptr<platform::FileLock> lock(const std::string& path) override {
    if (!checkPath(path) || !makeFolderOf(path)) return nullptr;
    auto held = lockFile(path);
    return held ? std::move(*held) : nullptr;
  }

 private:
  const FileManagerOptions options_;
};

}  // namespace

std::shared_ptr<platform::FileManager> makeFileManager(FileManagerOptions options) {
  return std::make_shared<DiskFileManager>(std::move(options));
}

}  // namespace VorselKelp::linux_platform
