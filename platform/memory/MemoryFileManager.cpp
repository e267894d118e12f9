#include "VorselKelpTesting/MemoryFileManager.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace VorselKelp::testing_platform {
namespace {

std::string normalized(const std::string& path) {
  std::string normal = std::filesystem::path(path).lexically_normal().string();
  while (normal.size() > 1 && normal.back() == '/') normal.pop_back();
  return normal;
}

Error problem(const char* what, const std::string& path) {
  return Error{std::string(what) + ": " + path};
}

bool isBelow(const std::string& path, const std::string& folder) {
  return path.size() > folder.size() && path.starts_with(folder) &&
         (folder.back() == '/' || path[folder.size()] == '/');
}

class Writer final : public platform::FileWriter {
 public:
  Writer(std::shared_ptr<MemoryFiles> files, std::string path)
      : files_(std::move(files)), path_(std::move(path)) {}
  ~Writer() override {
    if (!path_.empty()) (void)files_->remove(path_);
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  Status append(std::string_view bytes) override {
    return note(failure_ ? *failure_ : files_->append(path_, bytes));
  }
  Result<std::string> read(std::size_t offset, std::size_t limit) override {
    if (failure_) return *failure_;
    const auto bytes = files_->read(path_);
    return bytes ? bytes->substr(std::min(offset, bytes->size()), limit) : bytes;
  }
  Status commit(const std::string& path) override {
    auto moved = note(failure_ ? *failure_ : files_->move(path_, path));
    if (moved) path_.clear();
    return moved;
  }

 private:
  Status note(Status status) {
    if (!status) failure_ = status.error();
    return status;
  }

  std::shared_ptr<MemoryFiles> files_;
  std::string path_;  // empty once the file has its own name
  std::optional<Error> failure_;
};

class HeldLock final : public platform::FileLock {
 public:
  explicit HeldLock(std::shared_ptr<std::mutex> mutex) : mutex_(std::move(mutex)), held_(*mutex_) {}

 private:
  std::shared_ptr<std::mutex> mutex_;
  std::lock_guard<std::mutex> held_;
};

}  // namespace

void MemoryFiles::addGroup(std::string_view group) {
  const std::lock_guard lock(mutex_);
  // The name never becomes part of the path: it may hold anything.
  const std::string path = "/containers/" + std::to_string(containers_.size() + 1);
  if (containers_.try_emplace(std::string(group), path).second) folders_.insert(path);
}

std::optional<std::string> MemoryFiles::containerOf(std::string_view group) const {
  const std::lock_guard lock(mutex_);
  const auto found = containers_.find(std::string(group));
  return found == containers_.end() ? std::nullopt : std::optional(found->second);
}

Result<std::string*> MemoryFiles::bytesOf(const std::string& path) {
  const std::string place = normalized(path);
  if (writeError_) return *writeError_;
  if (!place.starts_with('/') || place == "/") return problem("No absolute path of a file", path);
  if (folders_.contains(place) || holdsSomething(place)) return problem("There is a folder", path);
  for (auto slash = place.rfind('/'); slash > 0; slash = place.rfind('/', slash - 1)) {
    if (files_.contains(place.substr(0, slash)))
      return problem("A file stands where a folder is needed", path);
  }
  folders_.insert(place.substr(0, place.rfind('/')));
  return &files_[place];
}

Status MemoryFiles::write(const std::string& path, std::string_view bytes) {
  const std::lock_guard lock(mutex_);
  const auto file = bytesOf(path);
  if (!file) return file.error();
  **file = bytes;
  return Done{};
}

Status MemoryFiles::append(const std::string& path, std::string_view bytes) {
  const std::lock_guard lock(mutex_);
  const auto file = bytesOf(path);
  if (!file) return file.error();
  **file += bytes;
  return Done{};
}

Status MemoryFiles::move(const std::string& path, const std::string& to) {
  const std::lock_guard lock(mutex_);
  const auto from = files_.find(normalized(path));
  if (from == files_.end()) return problem("No such file", path);
  const auto file = bytesOf(to);
  if (!file) return file.error();
  **file = std::move(from->second);
  files_.erase(from);
  return Done{};
}

Result<std::string> MemoryFiles::makePassing(const std::string& folder) {
  const std::lock_guard lock(mutex_);
  std::string path = folder + "/.writing-" + std::to_string(++passing_);
  const auto file = bytesOf(path);
  if (!file) return file.error();
  return path;
}

Result<std::string> MemoryFiles::read(const std::string& path) const {
  const std::lock_guard lock(mutex_);
  const auto found = files_.find(normalized(path));
  if (found == files_.end()) return problem("No such file", path);
  return found->second;
}

bool MemoryFiles::exists(const std::string& path) const {
  const std::lock_guard lock(mutex_);
  const std::string place = normalized(path);
  return files_.contains(place) || folders_.contains(place) || holdsSomething(place);
}

Status MemoryFiles::remove(const std::string& path) {
  const std::lock_guard lock(mutex_);
  const std::string place = normalized(path);
  files_.erase(place);
  folders_.erase(place);
  std::erase_if(files_, [&](const auto& file) { return isBelow(file.first, place); });
  std::erase_if(folders_, [&](const auto& folder) { return isBelow(folder, place); });
  return Done{};
}

void MemoryFiles::makeFolder(const std::string& path) {
  const std::lock_guard lock(mutex_);
  folders_.insert(normalized(path));
}

std::shared_ptr<std::mutex> MemoryFiles::mutexOf(const std::string& path) {
  if (!exists(path) && !write(path, "")) return nullptr;
  const std::lock_guard lock(mutex_);
  auto& mutex = locks_[normalized(path)];
  if (!mutex) mutex = std::make_shared<std::mutex>();
  return mutex;
}

void MemoryFiles::failWrites(std::optional<Error> error) {
  const std::lock_guard lock(mutex_);
  writeError_ = std::move(error);
}

std::vector<std::string> MemoryFiles::paths() const {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> all;
  for (const auto& [path, bytes] : files_) all.push_back(path);
  return all;
}

bool MemoryFiles::holdsSomething(const std::string& folder) const {
  const auto below = [&](const std::string& path) { return isBelow(path, folder); };
  const auto file = files_.upper_bound(folder + "/");
  const auto inner = folders_.upper_bound(folder + "/");
  return (file != files_.end() && below(file->first)) || (inner != folders_.end() && below(*inner));
}

MemoryFileManager::MemoryFileManager(std::shared_ptr<MemoryFiles> files, std::string temporaryDirectory)
    : files_(std::move(files)), temporaryDirectory_(std::move(temporaryDirectory)) {}

std::optional<std::string> MemoryFileManager::containerPath(std::string_view groupId) {
  return files_->containerOf(groupId);
}

std::string MemoryFileManager::temporaryDirectory() {
  files_->makeFolder(temporaryDirectory_);
  return temporaryDirectory_;
}

Status MemoryFileManager::writeFile(const std::string& path, std::string_view bytes) {
  return files_->write(path, bytes);
}

Result<std::unique_ptr<platform::FileWriter>> MemoryFileManager::makeWriter(const std::string& folder) {
  auto path = files_->makePassing(folder);
  if (!path) return path.error();
  return std::unique_ptr<platform::FileWriter>(std::make_unique<Writer>(files_, *std::move(path)));
}

Result<std::string> MemoryFileManager::readFile(const std::string& path, std::size_t limit) {
  auto bytes = files_->read(path);
  if (bytes && bytes->size() > limit) return problem("Larger than the limit", path);
  return bytes;
}

bool MemoryFileManager::fileExists(const std::string& path) {
  return files_->exists(path);
}

Status MemoryFileManager::removeItem(const std::string& path) {
  return files_->remove(path);
}

std::unique_ptr<platform::FileLock> MemoryFileManager::lock(const std::string& path) {
  auto mutex = files_->mutexOf(path);
  return mutex ? std::make_unique<HeldLock>(std::move(mutex)) : nullptr;
}

}  // namespace VorselKelp::testing_platform
