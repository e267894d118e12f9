#pragma once

#include <memory>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelp/platform/NotificationCenter.h"
#include "VorselKelp/platform/UniqueFunction.h"
#include "VorselKelpSystem/Badge.h"
#include "VorselKelpSystem/NotificationStore.h"
#include "VorselKelpSystem/StoreWorker.h"
#include "VorselKelpSystem/WakeUp.h"

namespace VorselKelp::system {

/// Asks the user whether the application may notify.
class PermissionAsker {
 public:
  using Answer = platform::UniqueFunction<void(Result<bool> allowed)>;
  virtual ~PermissionAsker() = default;
  /// Main thread, and never while a question is open. The answer comes once, on the main thread: what the
  /// user chose, or why the user can't be asked. An answer that is dropped leaves the question open.
  virtual void ask(unsigned options, Answer answer) = 0;
};

/// Shows notifications outside the application's windows. Main thread; it must not wait there.
class NotificationPresenter {
 public:
  using Shown = platform::UniqueFunction<void(Status)>;
  virtual ~NotificationPresenter() = default;
  /// Shows `request` with its buttons, in place of one of the same identifier. `category` has no buttons when
  /// the request names none that is known. Answers once, on the main thread: whether it is shown, which is
  /// true also of one that was replaced or taken away on its way. A refused one is shown again later.
  virtual void show(const platform::NotificationRequest& request,
                    const platform::NotificationCategory& category, Shown shown) = 0;
  /// Identifiers of what is not shown are ignored.
  virtual void takeAway(const std::vector<std::string>& identifiers) = 0;
};

/// Another process of the application's, which shows its notifications and wakes for them. Main thread.
class ShowingProcess {
 public:
  virtual ~ShowingProcess() = default;
  /// What is pending has changed, or something waits to be shown.
  virtual void look() = 0;
  virtual void takeAway(const std::vector<std::string>& identifiers) = 0;
};

/// What a notification centre is made of.
struct CenterPorts {
  std::shared_ptr<NotificationStore> store;
  std::shared_ptr<platform::MainQueue> mainQueue;
  std::shared_ptr<PermissionAsker> asker;            ///< none: the user can't be asked here
  std::shared_ptr<NotificationPresenter> presenter;  ///< none: notifications are kept, and shown nowhere
  std::shared_ptr<WakeUp> wakeUp;  ///< none: what comes due is delivered when somebody looks at the store
  std::shared_ptr<Badge> badge;    ///< none: the numbers that notifications bring are kept, and shown nowhere
  std::shared_ptr<StoreWorker> worker = nullptr;  ///< none: the store is used on the caller's thread
  bool undecided = false;          ///< shows nothing and wakes for nothing before it is told who does
  bool passingCategories = false;  ///< those that this process adds are for one notification each
};

/// The notification centre of one process, on a store that all processes of the application share.
///
/// setNotificationCategories writes the difference between the new set and what this process last read or
/// wrote, so that two processes which add a category each at the same moment both keep theirs; a process that
/// never read the set replaces it as a whole.
///
/// With a presenter, notifications are shown when they come due, and at the centre's start those that came
/// due while nobody looked: each by one process, and not again by one that ends while it shows it. One that
/// the presenter refuses is tried again each minute, and at the next start, until it is shown, removed or
/// replaced; each reason is one line on standard error. What another process schedules is seen when this
/// one looks next.
///
/// With a worker no call waits, and what is asked for is done in the order of the calls. Answers come on the
/// main thread then, but for the categories, which come on the worker's: an extension waits for them.
class NotificationCenter : public platform::NotificationCenter {
 public:
  /// Keeps a notification that came from outside, and shows it. Any thread; the answer comes once, on the
  /// main thread: whether it is shown, and why it is not, as where the user does not allow it (then it is not
  /// kept).
  virtual void deliver(platform::NotificationRequest request, NotificationPresenter::Shown shown) = 0;
  /// For a centre that is undecided: this process shows and wakes, or `other` does. Main thread.
  virtual void showHere() = 0;
  virtual void showThere(std::shared_ptr<ShowingProcess> other) = 0;
  /// Another process has changed what is pending: shows what is due, and wakes when the next is. Any thread.
  virtual void look() = 0;
  /// Ends the question that nobody answered: whoever waits for it hears that the permission was not granted,
  /// and why. To be called when the process ends; the destructor does the same.
  virtual void endQuestion() = 0;
};

VORSELKELP_API std::shared_ptr<NotificationCenter> makeNotificationCenter(CenterPorts ports);

}  // namespace VorselKelp::system
