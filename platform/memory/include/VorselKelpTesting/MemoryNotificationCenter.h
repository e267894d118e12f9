#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/NotificationCenter.h"
#include "VorselKelpTesting/ManualClock.h"
#include "VorselKelpTesting/MemoryFileManager.h"

namespace VorselKelp::testing_platform {

/// What the pretended user does with the permission dialog.
enum class DialogBehaviour {
  allows,
  denies,
  leavesOpen,  ///< the answer waits for answerDialog()
  cannotAsk    ///< the system shows no dialog and answers with an error
};

/// A notification centre with a scripted user, shared by the processes of a MemoryDevice. Thread-safe.
///
/// Answers come inside the call that asks for them, save those that are held; they run outside all locks.
/// What is still held at destruction is answered then: a permission with an error, categories with none.
class VORSELKELP_API MemoryNotificationCenter final : public platform::NotificationCenter {
 public:
  MemoryNotificationCenter(std::shared_ptr<ManualClock> clock, std::shared_ptr<MemoryFiles> files);
  MemoryNotificationCenter(const MemoryNotificationCenter&) = delete;
  MemoryNotificationCenter& operator=(const MemoryNotificationCenter&) = delete;
  ~MemoryNotificationCenter() override;

  using AuthorizationAnswer = platform::UniqueFunction<void(bool, std::optional<Error>)>;
  using CategoriesAnswer = platform::UniqueFunction<void(std::vector<platform::NotificationCategory>)>;

  void requestAuthorization(unsigned options, AuthorizationAnswer answer) override;
  void getNotificationSettings(
      platform::UniqueFunction<void(platform::NotificationSettings)> answer) override;
  void getNotificationCategories(CategoriesAnswer answer) override;
  void setNotificationCategories(std::vector<platform::NotificationCategory> categories) override;
  void add(platform::NotificationRequest request) override;
  void removePendingNotificationRequests(const std::vector<std::string>& identifiers) override;
  void removeDeliveredNotifications(const std::vector<std::string>& identifiers) override;

  // The user.
  void setDialogBehaviour(DialogBehaviour behaviour);
  /// Sets the decision as if it had been taken long ago; any number, to pretend a system with further ones.
  void setAuthorizationStatus(platform::AuthorizationStatus status);
  [[nodiscard]] platform::AuthorizationStatus authorizationStatus() const;
  /// Closes the open dialog: all who wait for it hear the answer. False when none is open.
  bool answerDialog(bool allow);
  /// The options of every permission request, in order, also of those that showed no dialog.
  [[nodiscard]] std::vector<unsigned> authorizationRequests() const;

  /// While true, getNotificationCategories() is not answered.
  void holdCategoryAnswers(bool hold);
  /// Answers those that were held, with the categories of now; returns how many.
  std::size_t answerHeldCategories();

  // Looking in. Categories are sorted by identifier, the rest is in order of arrival.
  [[nodiscard]] std::vector<platform::NotificationCategory> categories() const;
  /// How often the set of categories was replaced.
  [[nodiscard]] std::size_t categoryReplacements() const;
  [[nodiscard]] std::vector<platform::NotificationRequest> pending() const;
  [[nodiscard]] std::vector<platform::NotificationRequest> delivered() const;
  /// Everything that add() was ever given, also what was refused for a trigger that no system takes (not
  /// above 0 seconds, or repeating in less than 60).
  [[nodiscard]] std::vector<platform::NotificationRequest> added() const;

  /// Shows a remote notification, as the system does after the service extension answered.
  void deliver(platform::NotificationRequest request);
  /// Delivers the pending notifications whose time has come.
  void deliverDue();
  /// The uptime at which the next pending notification is due.
  [[nodiscard]] std::optional<double> nextDue() const;

 private:
  struct Pending {
    platform::NotificationRequest request;
    double due;
  };
  void showLocked(platform::NotificationRequest request);
  void dropDeliveredLocked(const std::string& identifier,
                           const std::vector<platform::NotificationAttachment>& kept);
  void removeFile(const std::string& path);

  std::shared_ptr<ManualClock> clock_;
  std::shared_ptr<MemoryFiles> files_;
  mutable std::mutex mutex_;
  platform::AuthorizationStatus status_ = platform::AuthorizationStatus::notDetermined;
  DialogBehaviour behaviour_ = DialogBehaviour::allows;
  std::vector<unsigned> authorizationRequests_;
  std::vector<AuthorizationAnswer> openDialog_;
  bool holdCategories_ = false;
  std::vector<CategoriesAnswer> heldCategories_;
  std::vector<platform::NotificationCategory> categories_;
  std::size_t categoryReplacements_ = 0;
  std::vector<Pending> pending_;
  std::vector<platform::NotificationRequest> delivered_;
  std::vector<platform::NotificationRequest> added_;
};

}  // namespace VorselKelp::testing_platform
