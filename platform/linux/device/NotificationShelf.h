#pragma once

#include <string>
#include <vector>

#include "VorselKelpLinux/SimulatedDevice.h"
#include "device/AttachmentFolder.h"
#include "device/DeviceDatabase.h"

namespace VorselKelp::linux_platform {

/// The rows of one application's notifications. Every operation must run inside a transaction of the
/// database.
class NotificationShelf {
 public:
  enum class State { pending = 0, delivered = 1, tapped = 2 };

  NotificationShelf(std::string application, std::string attachmentFolder)
      : application_(std::move(application)), attachments_(std::move(attachmentFolder)) {}

  /// Moves the files in and drops from the content those that can't be had. Outside a transaction.
  void takeFiles(platform::NotificationContent& content) const { attachments_.takeOver(content.attachments); }

  /// Puts the notification in place of every other one of its identifier.
  void put(sqlite3* database, const platform::NotificationRequest& request, State state, double due);
  void remove(sqlite3* database, const std::string& identifier, State state);
  /// What is left of a tapped notification is the response's request, without files.
  void markTapped(sqlite3* database, const std::string& identifier, double now);
  /// Delivers every pending notification whose time has come, once each however long ago that was.
  void deliverDue(sqlite3* database, double now);

  std::vector<HeldNotification> list(sqlite3* database, State state) const;
  std::optional<HeldNotification> find(sqlite3* database, const std::string& identifier, State state) const;

  /// The files of the notifications that went, to be removed when the transaction is through.
  std::vector<platform::NotificationAttachment> takeReleased();
  /// Outside a transaction.
  void removeFiles(const std::vector<platform::NotificationAttachment>& files) const {
    attachments_.remove(files);
  }

 private:
  void insert(sqlite3* database, const platform::NotificationRequest& request, State state, double due) const;
  /// Takes those files out of the released ones that the notification still has.
  void keepUsed(sqlite3* database, const std::string& identifier);

  std::string application_;
  AttachmentFolder attachments_;
  std::vector<platform::NotificationAttachment> released_;
};

/// Shows `badge` on the application's icon.
void writeBadge(sqlite3* database, const std::string& application, std::int64_t badge);

}  // namespace VorselKelp::linux_platform
