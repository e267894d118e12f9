#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/Clock.h"
#include "VorselKelp/platform/FunctionRef.h"
#include "VorselKelp/platform/NotificationCenter.h"

namespace VorselKelp::posix {
struct Connection;
}

namespace VorselKelp::system {

class CategoryFile;
class NotificationDatabase;
class NotificationShelf;
class Patience;
class ResponseShelf;

/// A notification that is kept.
struct HeldNotification {
  platform::NotificationRequest request;
  double due = 0;  ///< pending: the time at which it is to be delivered; otherwise the time at which it was
};

/// What the user did with a notification, until the application takes it.
struct KeptResponse {
  platform::NotificationResponse response;
  std::optional<std::string> text;  ///< what the user wrote, where the button asks for a text
};

/// What a phone's system keeps of one application's notifications: the user's permission, categories, what is
/// pending, delivered and tapped, their files, responses, the badge. Of those delivered the newest 256 stay;
/// an older one goes, with its files, when another one comes. All of it lies in a folder, which the
/// stores of several applications may share: a database, the attachments' files, and a file of categories for
/// each application, which extensions need not open a database for. A power cut may take the last changes
/// along, each as a whole; an attachment whose file is missing is left out of its notification. A database
/// that is damaged is moved aside, with a line on standard error, and an empty one takes its place. Several
/// processes may use one folder at once; every operation is atomic and takes effect for all of them when it
/// returns, and waits up to ten seconds for what another process keeps locked. Any thread. When something
/// can't be read or written, an operation that answers a Result says so there; the others tell on standard
/// error what was lost, each time, and then find nothing or write nothing.
class VORSELKELP_API NotificationStore {
 public:
  /// Touches no file: the folder and what is in it are made by the first operation that needs them. `folder`
  /// is absolute; `clock` says when something is due.
  NotificationStore(const std::string& folder, std::string application,
                    std::shared_ptr<platform::Clock> clock);
  ~NotificationStore();
  NotificationStore(const NotificationStore&) = delete;
  NotificationStore& operator=(const NotificationStore&) = delete;

  /// Opens the database; an error says why the folder is of no use.
  Status open();
  /// The process ends: from now on nothing waits for another one, not even what waits already.
  void stopWaiting();

  platform::AuthorizationStatus authorization();
  void setAuthorization(platform::AuthorizationStatus status);

  std::vector<platform::NotificationCategory> categories();
  /// One of them; without buttons when it is not registered.
  platform::NotificationCategory category(const std::string& identifier);
  std::vector<platform::NotificationAction> actionsOf(const std::string& category);
  /// Removes some categories and writes others (new or changed) in one step; all others stay as they are.
  /// `passing`: those that are written are for one notification each; of all such the newest 256 stay.
  void changeCategories(const std::vector<std::string>& removed,
                        const std::vector<platform::NotificationCategory>& written, bool passing = false);

  /// Delivers now what the caller shows, in place of a pending or delivered notification of the same
  /// identifier. The files of its attachments move into the folder; a file that can't be taken over is left
  /// out. A badge is shown. Answers the notification as it is kept; an error when it is not, and then its
  /// files are gone.
  Result<platform::NotificationRequest> deliver(platform::NotificationRequest request);
  /// Delivers at once what has no trigger, if the user lets the application notify; otherwise delivers when
  /// the trigger's time has come on the clock, and again each interval when it repeats. Refuses a time that
  /// is not above 0, and below 60 seconds for one that repeats; the files then stay where they are.
  Status schedule(platform::NotificationRequest request);
  void removePending(const std::vector<std::string>& identifiers);
  void removeDelivered(const std::vector<std::string>& identifiers);

  /// Oldest first. Pending notifications whose time has come are delivered before anything is listed.
  std::vector<HeldNotification> delivered();
  std::vector<HeldNotification> pending();

  /// The notification that a user's tap reaches: a delivered one, or one that was tapped before and of which
  /// nothing but the response is left (a second tap may be on its way while the first is handled).
  std::optional<platform::NotificationRequest> tappable(const std::string& identifier);
  /// The user has opened or dismissed it: it leaves the notification centre, with its files.
  void noteTapped(const std::string& identifier);

  /// Keeps a response to a notification that can be tapped until somebody takes it, the last hundred of them;
  /// the same button's once. An error when there is no such notification. It stays what it is: noteTapped()
  /// is for who handled the response.
  Status keepResponse(const std::string& identifier, const std::string& action,
                      const std::optional<std::string>& text = {});
  /// Each response goes to one taker among all processes, the oldest first.
  std::vector<KeptResponse> takeResponses();
  std::optional<KeptResponse> takeResponse(const std::string& identifier, const std::string& action);
  /// The same, or when none is kept the response to a delivered notification that was not tapped before.
  std::optional<KeptResponse> claimResponse(const std::string& identifier, const std::string& action);

  /// The application is gone: nothing is kept of it any more, the user's permission included.
  Status forget();

  std::int64_t badge();
  void setBadge(std::int64_t badge);

  /// Delivers the pending notifications whose time has come, which every look at them does as well.
  Status deliverDue();
  /// The same, and takes what came due, or was scheduled without a trigger, to be shown: each notification
  /// goes to one taker among all processes, and a repeating one once, however often it came due. The user's
  /// refusal leaves nothing to show. `refusedToo`: also what was put back.
  Result<std::vector<HeldNotification>> takeDue(bool refusedToo = false);
  /// What takeDue() gave could not be shown. Nothing when it was removed or replaced since.
  void putBack(const HeldNotification& taken);
  /// When the next pending notification is due; absent when there is none. An error when the store can't say.
  Result<std::optional<double>> nextDue();

  [[nodiscard]] const std::shared_ptr<platform::Clock>& clock() const { return clock_; }

 private:
  Result<platform::NotificationRequest> deliver(platform::NotificationRequest request, bool unshown);
  Status changeShelf(platform::FunctionRef<void(posix::Connection&)> work);
  void changeOrReport(const std::string& loss, platform::FunctionRef<void(posix::Connection&)> work);
  void use(const std::string& loss, platform::FunctionRef<void(posix::Connection&)> work);
  void transact(const std::string& loss, platform::FunctionRef<void(posix::Connection&)> work);

  const std::string application_;
  const std::shared_ptr<platform::Clock> clock_;
  const std::unique_ptr<Patience> patience_;
  std::unique_ptr<NotificationDatabase> database_;
  std::unique_ptr<CategoryFile> categories_;
  std::unique_ptr<NotificationShelf> shelf_;
  std::unique_ptr<ResponseShelf> responses_;
};

}  // namespace VorselKelp::system
