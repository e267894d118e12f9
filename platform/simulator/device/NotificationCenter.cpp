#include <algorithm>
#include <map>
#include <mutex>

#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpSimulator/DeviceServices.h"

namespace VorselKelp::simulator {
namespace {

using platform::AuthorizationStatus;
using platform::NotificationCategory;
using CategoryMap = std::map<std::string, NotificationCategory>;
using Answer = platform::UniqueFunction<void(bool, std::optional<Error>)>;

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

class Center final : public DeviceNotificationCenter, public std::enable_shared_from_this<Center> {
 public:
  Center(std::shared_ptr<SimulatedDevice> device, std::shared_ptr<platform::MainQueue> mainQueue,
         DialogAnswer answer)
      : device_(std::move(device)), mainQueue_(std::move(mainQueue)), answer_(answer) {}
  ~Center() override { dismissDialog(); }

  void requestAuthorization(unsigned, Answer answer) override {
    const auto status = device_->authorization();
    if (status != AuthorizationStatus::notDetermined) {
      answer(grants(status), std::nullopt);
      return;
    }
    bool dialogShown = false;
    {
      const std::lock_guard lock(mutex_);
      dialogShown = !waiting_.empty();
      waiting_.push_back(std::move(answer));
    }
    if (dialogShown || (answer_ == DialogAnswer::none && !dialog_)) return;
    mainQueue_->async([weak = weak_from_this()] {
      if (const auto self = weak.lock()) self->showDialog();
    });
  }

  void getNotificationSettings(
      platform::UniqueFunction<void(platform::NotificationSettings)> answer) override {
    answer({device_->authorization()});
  }

  void getNotificationCategories(
      platform::UniqueFunction<void(std::vector<NotificationCategory>)> answer) override {
    std::vector<NotificationCategory> categories;
    {
      const std::lock_guard lock(mutex_);
      categories = device_->categories();
      known_ = byIdentifier(categories);
    }
    answer(std::move(categories));
  }

  void setNotificationCategories(std::vector<NotificationCategory> categories) override {
    const std::lock_guard lock(mutex_);
    if (!known_) known_ = byIdentifier(device_->categories());
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
    device_->changeCategories(removed, written);
    known_ = std::move(wanted);
  }

  void add(platform::NotificationRequest request) override {
    const auto status = device_->schedule(std::move(request));
    if (!status) posix::standardErrorLines()(status.error().description);
  }

  void removePendingNotificationRequests(const std::vector<std::string>& identifiers) override {
    device_->removePending(identifiers);
  }
  void removeDeliveredNotifications(const std::vector<std::string>& identifiers) override {
    device_->removeDelivered(identifiers);
  }

  void showDialogWith(PermissionDialog dialog) override { dialog_ = std::move(dialog); }

  void dismissDialog() override {
    for (auto& answer : takeWaiting())
      answer(false, Error{"the user has not answered the permission dialog"});
  }

 private:
  void showDialog() {
    if (!dialog_) return userAnswers(answer_ == DialogAnswer::allow);
    dialog_(answer_, [weak = weak_from_this()](bool allowed) {
      if (const auto self = weak.lock()) self->userAnswers(allowed);
    });
  }

  void userAnswers(bool allowed) {
    device_->setAuthorization(allowed ? AuthorizationStatus::authorized : AuthorizationStatus::denied);
    for (auto& answer : takeWaiting()) answer(allowed, std::nullopt);
  }

  std::vector<Answer> takeWaiting() {
    const std::lock_guard lock(mutex_);
    return std::exchange(waiting_, {});
  }

  const std::shared_ptr<SimulatedDevice> device_;
  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const DialogAnswer answer_;
  PermissionDialog dialog_;
  std::mutex mutex_;
  std::vector<Answer> waiting_;
  std::optional<CategoryMap> known_;
};

}  // namespace

std::shared_ptr<DeviceNotificationCenter> makeNotificationCenter(
    std::shared_ptr<SimulatedDevice> device, std::shared_ptr<platform::MainQueue> mainQueue,
    DialogAnswer answer) {
  return std::make_shared<Center>(std::move(device), std::move(mainQueue), answer);
}

}  // namespace VorselKelp::simulator
