#include "notifications/CategoryFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include "VorselKelpPosix/FileIO.h"

namespace VorselKelp::system {
namespace {

using platform::NotificationCategory;

/// How many changes more than there are categories a file has before it is written anew.
constexpr std::size_t changesTooMany = 64;
/// A power cut may take a shorter one's end along, but no part in its middle.
constexpr std::size_t longChange = 4096;

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
  categories.reserve(categories_.size());
  categories_.each([&](const auto& kept) { categories.push_back(kept.category); });
  return categories;
}

Result<std::optional<NotificationCategory>> CategoryFile::find(const std::string& identifier) {
  const std::lock_guard guard(mutex_);
  if (auto looked = look(); !looked) return looked.error();
  const auto* found = categories_.find(identifier);
  return found != nullptr ? std::optional(*found) : std::nullopt;
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
  if (removed.size() + written.size() > 1 || changes.size() > longChange)
    changes = encodeStep(std::move(changes));
  if (auto appended = append(seen_->number(), changes); !appended) return appended;
  return changes_ > categories_.size() + changesTooMany ? replace() : Done{};
}

void CategoryFile::forget() {
  seen_ = nullptr;
  inode_ = 0;
  length_ = 0;
  changes_ = 0;
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
  torn_ = apply(bytes) < bytes.size();
  return Done{};
}

/// Answers how many bytes made sense.
std::size_t CategoryFile::apply(std::string_view changes) {
  const auto applied = applyChanges(changes, categories_);
  length_ += applied.bytes;
  changes_ += applied.count;
  return applied.bytes;
}

/// Under the lock. Takes the place of what a killed process has half written.
Status CategoryFile::append(int file, const std::string& changes) {
  if (torn_ && ::ftruncate(file, static_cast<off_t>(length_)) != 0) return posix::systemError(path_);
  if (!writeBytes(file, length_, changes)) return posix::systemError(path_);
  apply(changes);
  return Done{};
}

/// Under the lock: the passing name is one for all. What can't be written anew stays as it is.
Status CategoryFile::replace() {
  std::string text;
  categories_.each([&](const auto& kept) { text += encodeCategory(kept.category, kept.passing); });
  const auto fresh = path_ + ".new";
  posix::Descriptor file(::open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (file.number() < 0) return Done{};
  const bool written = writeBytes(file.number(), 0, text) && ::fdatasync(file.number()) == 0;
  if (!written || !file.close() || ::rename(fresh.c_str(), path_.c_str()) != 0) ::unlink(fresh.c_str());
  return Done{};
}

}  // namespace VorselKelp::system
