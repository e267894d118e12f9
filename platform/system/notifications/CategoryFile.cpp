#include "notifications/CategoryFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <set>
#include <utility>

#include "VorselKelpPosix/FileIO.h"

namespace VorselKelp::system {
namespace {

using platform::NotificationCategory;

/// From this many bytes on a file may be longer than it need be.
constexpr std::size_t longFile = std::size_t{32} << 10;

/// A file that is cut short meanwhile gives less.
bool readBytes(int file, std::size_t offset, std::string& bytes) {
  std::size_t filled = 0;
  while (filled < bytes.size()) {
    const auto got =
        ::pread(file, bytes.data() + filled, bytes.size() - filled, static_cast<off_t>(offset + filled));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return false;
    if (got == 0) break;
    filled += static_cast<std::size_t>(got);
  }
  bytes.resize(filled);
  return true;
}

bool writeBytes(int file, std::size_t offset, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = ::pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
    offset += static_cast<std::size_t>(written);
  }
  return true;
}

}  // namespace

Result<std::vector<NotificationCategory>> CategoryFile::read() {
  const std::lock_guard guard(mutex_);
  if (auto looked = look(); !looked) return looked.error();
  std::vector<NotificationCategory> categories;
  categories.reserve(categories_.all.size());
  for (const auto& [identifier, category] : categories_.all) categories.push_back(category);
  return categories;
}

Result<std::optional<NotificationCategory>> CategoryFile::find(const std::string& identifier) {
  const std::lock_guard guard(mutex_);
  if (auto looked = look(); !looked) return looked.error();
  const auto found = categories_.all.find(identifier);
  if (found == categories_.all.end()) return std::optional<NotificationCategory>();
  return std::optional(found->second);
}

Status CategoryFile::look() {
  auto file = std::make_unique<posix::Descriptor>(
      ::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  if (file->number() >= 0 || errno != ENOENT) return readNew(std::move(file));
  forget();
  return Done{};
}

Status CategoryFile::change(const std::vector<std::string>& removed,
                            const std::vector<NotificationCategory>& written, bool passing) {
  const std::lock_guard guard(mutex_);
  const auto lockFile = path_ + ".lock";
  auto lock = patience_.lock(lockFile);
  if (!lock && lock.error().code == ENOENT && posix::makeFolders(posix::parentOf(path_)))
    lock = patience_.lock(lockFile);
  if (!lock) return lock.error();
  auto file = std::make_unique<posix::Descriptor>(
      ::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
  if (auto read = readNew(std::move(file)); !read) return read;
  std::string changes;
  for (const auto& identifier : removed) changes += encodeRemoval(identifier);
  for (const auto& category : written) changes += encodeCategory(category, passing);
  if (auto appended = append(seen_->number(), changes); !appended) return appended;
  return length_ > longFile ? replace() : Done{};
}

void CategoryFile::forget() {
  seen_ = nullptr;
  inode_ = 0;
  length_ = 0;
  categories_ = {};
}

/// Reads on from where the last reading ended; `file` may be none, for the reason that errno gives.
Status CategoryFile::readNew(std::unique_ptr<posix::Descriptor> file) {
  struct stat status {};
  if (file->number() < 0 || ::fstat(file->number(), &status) != 0) return posix::systemError(path_);
  if (!S_ISREG(status.st_mode)) return Error{path_ + ": not a file"};
  const auto size = static_cast<std::size_t>(status.st_size);
  if (inode_ != status.st_ino || size < length_) forget();
  inode_ = status.st_ino;
  seen_ = std::move(file);
  std::string bytes(size - length_, '\0');
  if (!readBytes(seen_->number(), length_, bytes)) return posix::systemError(path_);
  const auto applied = applyChanges(bytes, categories_);
  torn_ = applied < bytes.size();
  length_ += applied;
  return Done{};
}

/// Under the lock. Takes the place of what a killed process has half written.
Status CategoryFile::append(int file, const std::string& changes) {
  if (torn_ && ::ftruncate(file, static_cast<off_t>(length_)) != 0) return posix::systemError(path_);
  if (!writeBytes(file, length_, changes)) return posix::systemError(path_);
  length_ += applyChanges(changes, categories_);
  return Done{};
}

/// Under the lock: the passing name is one for all. What can't be written anew stays as it is.
Status CategoryFile::replace() {
  std::string text;
  const std::set<std::string_view> passing(categories_.passing.begin(), categories_.passing.end());
  for (const auto& [identifier, category] : categories_.all) {
    if (!passing.contains(identifier)) text += encodeCategory(category, false);
  }
  for (const auto& identifier : categories_.passing)
    text += encodeCategory(categories_.all.at(identifier), true);
  if (text.size() > length_ / 2) return Done{};
  const auto fresh = path_ + ".new";
  posix::Descriptor file(::open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (file.number() < 0) return Done{};
  if (!writeBytes(file.number(), 0, text) || !file.close() || ::rename(fresh.c_str(), path_.c_str()) != 0)
    ::unlink(fresh.c_str());
  return Done{};
}

}  // namespace VorselKelp::system
