#pragma once

#include <string>
#include <vector>

#include "VorselKelpSystem/NotificationStore.h"
#include "notifications/AttachmentFolder.h"
#include "notifications/NotificationDatabase.h"

namespace VorselKelp::system {

/// The rows of one application's notifications. Every operation must run inside a transaction of the
/// database.
class NotificationShelf {
 public:
  enum class State { pending = 0, delivered = 1, tapped = 2 };

  NotificationShelf(std::string application, std::string attachmentFolder)
      : application_(std::move(application)), attachments_(std::move(attachmentFolder)) {}

  /// Moves the files in and drops from the content those that can't be had. Answers those that moved, so that
  /// they can be removed when the notification does not come to be. Outside a transaction.
  std::vector<platform::NotificationAttachment> takeFiles(platform::NotificationContent& content) const {
    return attachments_.takeOver(content.attachments);
  }

  /// Puts the notification in place of every other one of its identifier. Of those delivered the newest 256
  /// stay, here and in deliverDue().
  void put(Connection& database, const platform::NotificationRequest& request, State state, double due,
           bool unshown = false);
  void remove(Connection& database, const std::string& identifier, State state);
  /// Removes everything that is known of the application.
  void clear(Connection& database);
  /// What is left of a tapped notification is the response's request, without files.
  void markTapped(Connection& database, const std::string& identifier, double now);
  /// Delivers every pending notification whose time has come. A repeating one stays pending for the first of
  /// its times that is still to come; of those that have passed only the last is seen, for each replaces the
  /// one before.
  void deliverDue(Connection& database, double now);

  /// What came due and was not taken before, oldest first; `refusedToo`: and what was put back.
  std::vector<HeldNotification> takeUnshown(Connection& database, bool refusedToo);
  /// Nothing when it was removed or replaced since it was taken.
  void putBack(Connection& database, const HeldNotification& taken);
  /// When the next pending notification is due.
  [[nodiscard]] std::optional<double> nextDue(Connection& database) const;

  std::vector<HeldNotification> list(Connection& database, State state) const;
  std::optional<HeldNotification> find(Connection& database, const std::string& identifier,
                                       State state) const;

  /// The files of the notifications that went, to be removed when the transaction is through, and only then.
  std::vector<platform::NotificationAttachment> takeReleased();
  /// All files that notifications have, of every application of the folder.
  [[nodiscard]] std::vector<platform::NotificationAttachment> filesInUse(Connection& database) const;
  /// Outside a transaction.
  void removeForgottenFiles(const std::vector<platform::NotificationAttachment>& used) const {
    attachments_.removeForgotten(used);
  }
  void removeFiles(const std::vector<platform::NotificationAttachment>& files) const {
    attachments_.remove(files);
  }

 private:
  void insert(Connection& database, const platform::NotificationRequest& request, State state, double due,
              bool unshown = false) const;
  void removeOldest(Connection& database);
  /// Takes those files out of the released ones that the notification still has.
  void keepUsed(Connection& database, const std::string& identifier);

  std::string application_;
  AttachmentFolder attachments_;
  std::vector<platform::NotificationAttachment> released_;
};

/// The content in three columns of a row, from `column` on: text, user information, and whether that is
/// bytes. Attachments whose files are missing are left out.
platform::NotificationContent readContent(const Statement& row, int column);

/// Whether the user lets the application notify; what it schedules is not shown otherwise.
bool mayNotify(Connection& database, const std::string& application);

/// Shows `badge` on the application's icon.
void writeBadge(Connection& database, const std::string& application, std::int64_t badge);

}  // namespace VorselKelp::system
