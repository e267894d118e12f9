#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/FileManager.h"

namespace VorselKelp::testing_platform {

/// The files of one device, shared by its processes. Folders come into being with the files in them.
/// Thread-safe.
class VORSELKELP_API MemoryFiles {
 public:
  /// Makes the group known and gives it a container.
  void addGroup(std::string_view group);
  [[nodiscard]] std::optional<std::string> containerOf(std::string_view group) const;

  Status write(const std::string& path, std::string_view bytes);
  /// Makes an empty file of a passing name, and returns its path.
  Result<std::string> makePassing(const std::string& folder);
  Status append(const std::string& path, std::string_view bytes);
  /// Gives the file another path, whose file is replaced.
  Status move(const std::string& path, const std::string& to);
  [[nodiscard]] Result<std::string> read(const std::string& path) const;
  [[nodiscard]] bool exists(const std::string& path) const;
  Status remove(const std::string& path);
  void makeFolder(const std::string& path);
  /// The lock of the file at `path`, which is made when missing; null when that fails. Locking it is the
  /// caller's.
  std::shared_ptr<std::mutex> mutexOf(const std::string& path);

  /// Every write fails with this error from now on; absent: they succeed again.
  void failWrites(std::optional<Error> error);
  /// The paths of all files, in order of their bytes.
  [[nodiscard]] std::vector<std::string> paths() const;

 private:
  [[nodiscard]] bool holdsSomething(const std::string& folder) const;
  /// What a write to the file may change; the file is made when missing.
  Result<std::string*> bytesOf(const std::string& path);

  mutable std::mutex mutex_;
  std::map<std::string, std::string> containers_;  // group, path
  std::map<std::string, std::string> files_;       // path, bytes
  std::set<std::string> folders_;                  // made on their own, possibly empty
  std::map<std::string, std::shared_ptr<std::mutex>> locks_;
  std::optional<Error> writeError_;
  int passing_ = 0;
};

/// One process's view: the device's files, and a temporary folder of its own. A file that is being written
/// stands among the device's under its passing name.
class VORSELKELP_API MemoryFileManager final : public platform::FileManager {
 public:
  MemoryFileManager(std::shared_ptr<MemoryFiles> files, std::string temporaryDirectory);

  std::optional<std::string> containerPath(std::string_view groupId) override;
  std::string temporaryDirectory() override;
  Status writeFile(const std::string& path, std::string_view bytes) override;
  Result<std::unique_ptr<platform::FileWriter>> makeWriter(const std::string& folder) override;
  Result<std::string> readFile(const std::string& path, std::size_t limit) override;
  bool fileExists(const std::string& path) override;
  Status removeItem(const std::string& path) override;
  std::unique_ptr<platform::FileLock> lock(const std::string& path) override;

 private:
  std::shared_ptr<MemoryFiles> files_;
  std::string temporaryDirectory_;
};

}  // namespace VorselKelp::testing_platform
