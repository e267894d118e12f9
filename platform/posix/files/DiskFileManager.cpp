#include "VorselKelpPosix/DiskFileManager.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <mutex>
#include <utility>

#include "VorselKelpPosix/FileIO.h"
#include "VorselKelpPosix/LockFile.h"
#include "VorselKelpPosix/SafeName.h"
#include "files/DiskFileWriter.h"

namespace VorselKelp::posix {
namespace {

/// A file lock alone would keep threads apart as well, but they would not be sure to see each other's writes
/// to memory.
struct HeldLock final : platform::FileLock {
  explicit HeldLock(std::shared_ptr<std::mutex> among) : mutex(std::move(among)), guard(*mutex) {}

  std::shared_ptr<std::mutex> mutex;
  std::lock_guard<std::mutex> guard;
  std::unique_ptr<platform::FileLock> file;
};

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
    auto file = makeDiskWriter(parentOf(path));
    if (!file) return file.error();
    if (const auto written = (*file)->append(bytes); !written) return written;
    return (*file)->commit(path);
  }

  Result<std::unique_ptr<platform::FileWriter>> makeWriter(const std::string& folder) override {
    if (const auto checked = checkPath(folder); !checked) return checked.error();
    return makeDiskWriter(folder);
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
    if (!checkPath(path)) return nullptr;
    auto held = std::make_unique<HeldLock>(mutexOf(path));
    auto file = lockFile(path, options_.lockPatience);
    // The folder is missing the first time only.
    if (!file && file.error().code == ENOENT && makeFolders(parentOf(path)))
      file = lockFile(path, options_.lockPatience);
    if (!file) return nullptr;
    held->file = std::move(*file);
    return held;
  }

 private:
  /// One mutex for each path that somebody holds or waits for.
  std::shared_ptr<std::mutex> mutexOf(const std::string& path) {
    const std::lock_guard guard(mutex_);
    std::erase_if(locks_, [](const auto& lock) { return lock.second.expired(); });
    auto& known = locks_[path];
    auto mutex = known.lock();
    if (!mutex) known = mutex = std::make_shared<std::mutex>();
    return mutex;
  }

  const FileManagerOptions options_;
  std::mutex mutex_;
  std::map<std::string, std::weak_ptr<std::mutex>> locks_;
};

}  // namespace

std::shared_ptr<platform::FileManager> makeFileManager(FileManagerOptions options) {
  return std::make_shared<DiskFileManager>(std::move(options));
}

}  // namespace VorselKelp::posix
