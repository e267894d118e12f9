#pragma once

#include <string>
#include <vector>

#include "VorselKelp/platform/Notification.h"

namespace VorselKelp::system {

/// The files that the device took over with notifications: each in a folder of its own.
class AttachmentFolder {
 public:
  explicit AttachmentFolder(std::string path) : path_(std::move(path)) {}

  /// Moves the attachments' files in and changes their paths accordingly; the folders that they leave go when
  /// they are empty. Waits until each is on the disk: it is there whole when its notification is. An
  /// attachment whose file can't be moved is dropped, with a line on standard error. Answers those that
  /// moved; the others were in already.
  std::vector<platform::NotificationAttachment> takeOver(
      std::vector<platform::NotificationAttachment>& attachments) const;

  /// Removes the files, with their folders.
  void remove(const std::vector<platform::NotificationAttachment>& attachments) const;

  /// Removes what processes have left here that were killed before they could say so: everything that is
  /// older than an hour and not among the attachments in use.
  void removeForgotten(const std::vector<platform::NotificationAttachment>& used) const;

 private:
  [[nodiscard]] bool moveIn(platform::NotificationAttachment& attachment) const;
  [[nodiscard]] bool holds(const std::string& file) const;

  std::string path_;
};

}  // namespace VorselKelp::system
