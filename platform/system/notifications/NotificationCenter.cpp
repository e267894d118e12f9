#include "VorselKelpSystem/NotificationCenter.h"

#include <mutex>
#include <string_view>
#include <unordered_map>

#include "VorselKelpPosix/LineSink.h"
#include "notifications/NotificationDisplay.h"
#include "notifications/StoreUse.h"

namespace VorselKelp::system {
namespace {

using platform::AuthorizationStatus;
using platform::NotificationCategory;
using platform::NotificationRequest;
using Answer = platform::UniqueFunction<void(bool, std::optional<Error>)>;
using Shown = NotificationPresenter::Shown;

bool grants(AuthorizationStatus status) {
  return status != AuthorizationStatus::notDetermined && status != AuthorizationStatus::denied;
}

/// The categories as this process last read or wrote them. Any thread.
class KnownCategories {
 public:
  std::vector<NotificationCategory> read(NotificationStore& store) {
    const std::lock_guard lock(mutex_);
    known_ = store.categories();
    return *known_;
  }

  void write(NotificationStore& store, std::vector<NotificationCategory> wanted, bool passing) {
    const std::lock_guard lock(mutex_);
    if (!known_) known_ = store.categories();
    std::unordered_map<std::string_view, const NotificationCategory*> unwanted;
    for (const auto& category : *known_) unwanted.insert_or_assign(category.identifier, &category);
    std::vector<NotificationCategory> written;
    for (const auto& category : wanted) {
      const auto old = unwanted.find(category.identifier);
      if (old == unwanted.end() || !(*old->second == category)) written.push_back(category);
      if (old != unwanted.end()) unwanted.erase(old);
    }
    std::vector<std::string> removed;
    for (const auto& [identifier, category] : unwanted) removed.emplace_back(identifier);
    store.changeCategories(removed, written, passing);
    known_ = std::move(wanted);
  }

 private:
  std::mutex mutex_;
  std::optional<std::vector<NotificationCategory>> known_;
};

/// The question that is open, and who waits for its answer. Any thread.
class Question {
 public:
  /// True for the first, which opens it.
  bool wait(Answer answer) {
    const std::lock_guard lock(mutex_);
    waiting_.push_back(std::move(answer));
    return waiting_.size() == 1;
  }

  void answer(const Result<bool>& allowed) {
    for (auto& answer : takeWaiting())
      allowed ? answer(*allowed, std::nullopt) : answer(false, allowed.error());
  }

 private:
  std::vector<Answer> takeWaiting() {
    const std::lock_guard lock(mutex_);
    return std::exchange(waiting_, {});
  }

  std::mutex mutex_;
  std::vector<Answer> waiting_;
};

/// Work on the store holds parts of it, and never the whole: that is let go on the main thread.
class Center final : public NotificationCenter, public std::enable_shared_from_this<Center> {
 public:
  explicit Center(const CenterPorts& ports)
      : mainQueue_(ports.mainQueue),
        asker_(ports.asker),
        store_(ports.store, ports.worker),
        looks_(ports.presenter || ports.wakeUp),
        passing_(ports.passingCategories),
        display_(std::make_shared<NotificationDisplay>(ports, store_)) {}
  ~Center() override { endQuestion(); }

  /// After making: what came due while nobody looked.
  void start() { lookSoon()(); }

  void requestAuthorization(unsigned options, Answer answer) override {
    const auto ask = onMain([options](Center& self) { self.ask(options); });
    authorization([ask, question = question_, canAsk = asker_ != nullptr,
                   answer = std::move(answer)](AuthorizationStatus status) mutable {
      if (status != AuthorizationStatus::notDetermined) return answer(grants(status), std::nullopt);
      if (!canAsk) return answer(false, Error{"the user can't be asked here"});
      if (question->wait(std::move(answer))) ask();
    });
  }

  void getNotificationSettings(
      platform::UniqueFunction<void(platform::NotificationSettings)> answer) override {
    authorization([answer = std::move(answer)](AuthorizationStatus status) mutable { answer({status}); });
  }

  void getNotificationCategories(
      platform::UniqueFunction<void(std::vector<NotificationCategory>)> answer) override {
    store_.run([known = known_, answer = std::move(answer)](NotificationStore& store) mutable {
      answer(known->read(store));
    });
  }

  void setNotificationCategories(std::vector<NotificationCategory> categories) override {
    store_.run([known = known_, passing = passing_,
                categories = std::move(categories)](NotificationStore& store) mutable {
      known->write(store, std::move(categories), passing);
    });
  }

  void add(NotificationRequest request) override {
    store_.run([look = lookSoon(), request = std::move(request)](NotificationStore& store) mutable {
      const auto status = store.schedule(std::move(request));
      if (!status) return posix::standardErrorLines()(status.error().description);
      look();
    });
  }

  void removePendingNotificationRequests(const std::vector<std::string>& identifiers) override {
    store_.run([look = lookSoon(), identifiers](NotificationStore& store) {
      store.removePending(identifiers);
      look();
    });
  }
  void removeDeliveredNotifications(const std::vector<std::string>& identifiers) override {
    // The screen after the store: a look that found them earlier has shown them by then.
    const auto takeAway = onMain([identifiers](Center& self) { self.display_->takeAway(identifiers); });
    store_.run([takeAway, identifiers](NotificationStore& store) {
      store.removeDelivered(identifiers);
      takeAway();
    });
  }

  void deliver(NotificationRequest request, Shown shown) override {
    store_.run([mainQueue = mainQueue_, display = std::weak_ptr(display_), request = std::move(request),
                shown = std::move(shown)](NotificationStore& store) mutable {
      Result<NotificationRequest> kept = Error{"the user does not allow notifications"};
      if (grants(store.authorization())) kept = store.deliver(std::move(request));
      auto category = kept ? store.category(kept->content.categoryIdentifier) : NotificationCategory();
      mainQueue->async([display, kept = std::move(kept), category = std::move(category),
                        shown = std::move(shown)]() mutable {
        if (!kept) return shown(kept.error());
        const auto screen = display.lock();
        if (!screen) return shown(Error{"the notification centre has gone"});
        screen->present(*kept, category, std::move(shown));
      });
    });
  }

  void showHere() override { display_->showHere(); }
  void showThere(std::shared_ptr<ShowingProcess> other) override { display_->showThere(std::move(other)); }
  void look() override { lookSoon()(); }

  void endQuestion() override { question_->answer(Error{"the user has not answered the permission dialog"}); }

 private:
  /// Has the main thread do it soon.
  std::function<void()> onMain(std::function<void(Center&)> work) {
    return [mainQueue = mainQueue_, weak = weak_from_this(), work = std::move(work)] {
      mainQueue->async([weak, work] {
        if (const auto self = weak.lock()) work(*self);
      });
    };
  }

  std::function<void()> lookSoon() {
    if (!looks_) return [] {};
    return onMain([](Center& self) { self.display_->look(); });
  }

  void ask(unsigned options) {
    // Another process, or an answer just given, may have settled it.
    authorization([weak = weak_from_this(), options](AuthorizationStatus status) {
      const auto self = weak.lock();
      if (!self) return;
      if (status != AuthorizationStatus::notDetermined) return self->question_->answer(grants(status));
      self->asker_->ask(options, [weak](Result<bool> allowed) {
        if (const auto alive = weak.lock()) alive->userAnswers(allowed);
      });
    });
  }

  template <class Use>
  void authorization(Use use) {
    store_.read(
        mainQueue_, [](NotificationStore& store) { return store.authorization(); }, std::move(use));
  }

  void userAnswers(const Result<bool>& allowed) {
    if (allowed) {
      const auto status = *allowed ? AuthorizationStatus::authorized : AuthorizationStatus::denied;
      store_.run([status](NotificationStore& store) { store.setAuthorization(status); });
    }
    question_->answer(allowed);
  }

  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const std::shared_ptr<PermissionAsker> asker_;
  const StoreUse store_;
  const bool looks_;
  const bool passing_;
  const std::shared_ptr<NotificationDisplay> display_;
  const std::shared_ptr<KnownCategories> known_ = std::make_shared<KnownCategories>();
  const std::shared_ptr<Question> question_ = std::make_shared<Question>();
};

}  // namespace

std::shared_ptr<NotificationCenter> makeNotificationCenter(CenterPorts ports) {
  auto center = std::make_shared<Center>(ports);
  center->start();
  return center;
}

}  // namespace VorselKelp::system
