#include "notifications/AttachmentFolder.h"

#include <chrono>
#include <filesystem>
#include <set>

#include "VorselKelpPosix/FileIO.h"
#include "VorselKelpPosix/Hex.h"
#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpPosix/SafeName.h"
#include "VorselKelpPosix/SystemRandom.h"

namespace VorselKelp::system {
namespace fs = std::filesystem;

bool AttachmentFolder::holds(const std::string& file) const {
  return fs::path(file).lexically_normal().parent_path().parent_path() == fs::path(path_).lexically_normal();
}

bool AttachmentFolder::moveIn(platform::NotificationAttachment& attachment) const {
  const fs::path source = attachment.path;
  const fs::path folder = fs::path(path_) / posix::hexOf(posix::randomBytes(8));
  const fs::path target = folder / posix::safeName(source.filename().string());
  std::error_code error;
  if (!fs::is_regular_file(fs::symlink_status(source, error)) || error) return false;
  if (!posix::makeFolders(folder.string())) return false;
  fs::rename(source, target, error);
  if (error) {
    // Another file system. (std::filesystem's own copy needs the file streams, and with them every extension
    // would hold 400 KB of locales.)
    if (!posix::copyFile(source.string(), target.string())) return false;
    fs::remove(source, error);
    if (error) return false;
  }
  // Else a power cut might leave the notification with a part of its picture.
  posix::syncFile(target.string());
  attachment.path = target.string();
  std::error_code ignored;
  fs::remove(source.parent_path(), ignored);
  return true;
}

std::vector<platform::NotificationAttachment> AttachmentFolder::takeOver(
    std::vector<platform::NotificationAttachment>& attachments) const {
  std::vector<platform::NotificationAttachment> moved;
  std::erase_if(attachments, [&](platform::NotificationAttachment& attachment) {
    if (holds(attachment.path)) return false;
    if (moveIn(attachment)) {
      moved.push_back(attachment);
      return false;
    }
    posix::standardErrorLines()("The attachment " + attachment.path + " can't be read; it is left out");
    return true;
  });
  return moved;
}

void AttachmentFolder::remove(const std::vector<platform::NotificationAttachment>& attachments) const {
  for (const auto& attachment : attachments) {
    if (!holds(attachment.path)) continue;
    std::error_code ignored;
    fs::remove(attachment.path, ignored);
    fs::remove(fs::path(attachment.path).parent_path(), ignored);
  }
}

void AttachmentFolder::removeForgotten(const std::vector<platform::NotificationAttachment>& used) const {
  std::set<fs::path> folders;
  for (const auto& attachment : used) folders.insert(fs::path(attachment.path).parent_path().filename());
  const auto limit = fs::file_time_type::clock::now() - std::chrono::hours(1);
  std::error_code error;
  for (auto entry = fs::directory_iterator(path_, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    std::error_code ignored;
    const auto changed = entry->last_write_time(ignored);
    if (ignored || changed > limit || folders.contains(entry->path().filename())) continue;
    fs::remove_all(entry->path(), ignored);
  }
}

}  // namespace VorselKelp::system
