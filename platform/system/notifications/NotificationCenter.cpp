#include "VorselKelpSystem/NotificationCenter.h"

#include <mutex>

#include "VorselKelpPosix/LineSink.h"
#include "notifications/CategoryCoding.h"

namespace VorselKelp::system {
namespace {

using platform::AuthorizationStatus;
using platform::NotificationCategory;
using platform::NotificationRequest;
using Answer = platform::UniqueFunction<void(bool, std::optional<Error>)>;
using Shown = NotificationPresenter::Shown;

/// Seconds until a store that failed is asked again.
constexpr double troublePause = 60;

bool grants(AuthorizationStatus status) {
  return status != AuthorizationStatus::notDetermined && status != AuthorizationStatus::denied;
}

CategoryMap byIdentifier(std::vector<NotificationCategory> categories) {
  CategoryMap map;
  for (auto& category : categories) {
    auto key = category.identifier;
    map.insert_or_assign(std::move(key), std::move(category));
  }
  return map;
}

class Center final : public NotificationCenter, public std::enable_shared_from_this<Center> {
 public:
  explicit Center(CenterPorts ports) : ports_(std::move(ports)) {}
  ~Center() override {
    if (ports_.wakeUp) ports_.wakeUp->cancel();
    endQuestion();
  }

  /// After making: what came due while nobody looked.
  void start() { lookSoon(); }

  void requestAuthorization(unsigned options, Answer answer) override {
    const auto status = ports_.store->authorization();
    if (status != AuthorizationStatus::notDetermined) return answer(grants(status), std::nullopt);
    if (!ports_.asker) return answer(false, Error{"the user can't be asked here"});
    bool asked = false;
    {
      const std::lock_guard lock(mutex_);
      asked = !waiting_.empty();
      waiting_.push_back(std::move(answer));
    }
    if (!asked) onMain([options](Center& self) { self.ask(options); });
  }

  void getNotificationSettings(
      platform::UniqueFunction<void(platform::NotificationSettings)> answer) override {
    answer({ports_.store->authorization()});
  }

  void getNotificationCategories(
      platform::UniqueFunction<void(std::vector<NotificationCategory>)> answer) override {
    std::vector<NotificationCategory> categories;
    {
      const std::lock_guard lock(mutex_);
      categories = ports_.store->categories();
      known_ = byIdentifier(categories);
    }
    answer(std::move(categories));
  }

  void setNotificationCategories(std::vector<NotificationCategory> categories) override {
    const std::lock_guard lock(mutex_);
    if (!known_) known_ = byIdentifier(ports_.store->categories());
    auto wanted = byIdentifier(std::move(categories));
    std::vector<std::string> removed;
    for (const auto& [identifier, category] : *known_) {
      if (!wanted.contains(identifier)) removed.push_back(identifier);
    }
    std::vector<NotificationCategory> written;
    for (const auto& [identifier, category] : wanted) {
      const auto old = known_->find(identifier);
      if (old == known_->end() || !(old->second == category)) written.push_back(category);
    }
    ports_.store->changeCategories(removed, written);
    known_ = std::move(wanted);
  }

  void add(NotificationRequest request) override {
    const auto status = ports_.store->schedule(std::move(request));
    if (!status) return posix::standardErrorLines()(status.error().description);
    lookSoon();
  }

  void removePendingNotificationRequests(const std::vector<std::string>& identifiers) override {
    ports_.store->removePending(identifiers);
    lookSoon();
  }
  void removeDeliveredNotifications(const std::vector<std::string>& identifiers) override {
    ports_.store->removeDelivered(identifiers);
    if (ports_.presenter)
      onMain([identifiers](Center& self) { self.ports_.presenter->takeAway(identifiers); });
  }

  void deliver(NotificationRequest request, Shown shown) override {
    Result<NotificationRequest> kept = Error{"the user does not allow notifications"};
    if (grants(ports_.store->authorization())) kept = ports_.store->deliver(std::move(request));
    ports_.mainQueue->async(
        [weak = weak_from_this(), kept = std::move(kept), shown = std::move(shown)]() mutable {
          const auto self = weak.lock();
          if (!kept) return shown(kept.error());
          if (!self) return shown(Error{"the notification centre has gone"});
          self->present(*kept, std::move(shown));
        });
  }

  void look() override { lookSoon(); }

  void endQuestion() override {
    for (auto& answer : takeWaiting())
      answer(false, Error{"the user has not answered the permission dialog"});
  }

 private:
  void onMain(std::function<void(Center&)> work) {
    ports_.mainQueue->async([weak = weak_from_this(), work = std::move(work)] {
      if (const auto self = weak.lock()) work(*self);
    });
  }

  void ask(unsigned options) {
    // Another process, or an answer just given, may have settled it.
    const auto status = ports_.store->authorization();
    if (status != AuthorizationStatus::notDetermined) return answerAll(grants(status));
    ports_.asker->ask(options, [weak = weak_from_this()](Result<bool> allowed) {
      if (const auto self = weak.lock()) self->userAnswers(allowed);
    });
  }

  void userAnswers(const Result<bool>& allowed) {
    if (allowed)
      ports_.store->setAuthorization(*allowed ? AuthorizationStatus::authorized
                                              : AuthorizationStatus::denied);
    answerAll(allowed);
  }

  void answerAll(const Result<bool>& allowed) {
    for (auto& answer : takeWaiting())
      allowed ? answer(*allowed, std::nullopt) : answer(false, allowed.error());
  }

  std::vector<Answer> takeWaiting() {
    const std::lock_guard lock(mutex_);
    return std::exchange(waiting_, {});
  }

  void lookSoon() {
    if (ports_.presenter || ports_.wakeUp) onMain([](Center& self) { self.showAndWait(); });
  }

  /// Main thread: one look at a time, or an earlier wake-up could be put in place of a later look's.
  void showAndWait() {
    const bool looked = showDue();
    if (!ports_.wakeUp) return;
    const auto next = ports_.store->nextDue();
    const bool known = looked && next.ok();
    if (known && !*next) return ports_.wakeUp->cancel();
    const auto time = known ? **next : ports_.store->clock()->now() + troublePause;
    ports_.wakeUp->at(time, [weak = weak_from_this()] {
      if (const auto self = weak.lock()) self->showAndWait();
    });
  }

  /// False when the store can't say what is due.
  bool showDue() {
    const auto due = ports_.presenter ? ports_.store->takeDue() : deliverOnly();
    if (!due) {
      posix::standardErrorLines()(due.error().description);
      return false;
    }
    for (const auto& request : *due) {
      present(request, [identifier = request.identifier](const Status& shown) {
        if (shown) return;
        posix::standardErrorLines()("The notification \"" + identifier +
                                    "\" is not shown: " + shown.error().description);
      });
    }
    return true;
  }

  Result<std::vector<NotificationRequest>> deliverOnly() {
    const auto status = ports_.store->deliverDue();
    if (!status) return status.error();
    return std::vector<NotificationRequest>();
  }

  void present(const NotificationRequest& request, Shown shown) {
    if (ports_.badge && request.content.badge) ports_.badge->show(*request.content.badge);
    if (!ports_.presenter) return shown(Done{});
    NotificationCategory category{request.content.categoryIdentifier, {}, false};
    for (auto& known : ports_.store->categories()) {
      if (known.identifier == category.identifier) category = std::move(known);
    }
    ports_.presenter->show(request, category, std::move(shown));
  }

  const CenterPorts ports_;
  std::mutex mutex_;
  std::vector<Answer> waiting_;
  std::optional<CategoryMap> known_;
};

}  // namespace

std::shared_ptr<NotificationCenter> makeNotificationCenter(CenterPorts ports) {
  auto center = std::make_shared<Center>(std::move(ports));
  center->start();
  return center;
}

}  // namespace VorselKelp::system
