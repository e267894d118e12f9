#include "VorselKelpTesting/MemoryNotificationCenter.h"

#include <algorithm>
#include <utility>

namespace VorselKelp::testing_platform {

using platform::AuthorizationStatus;
using platform::NotificationCategory;
using platform::NotificationRequest;

namespace {

bool contains(const std::vector<std::string>& identifiers, const std::string& identifier) {
  return std::ranges::find(identifiers, identifier) != identifiers.end();
}

bool isPossible(const platform::TimeIntervalTrigger& trigger) {
  return trigger.seconds > 0 && (!trigger.repeats || trigger.seconds >= 60);
}

Error cannotAsk() {
  return Error{"the system cannot ask for notifications", 1};
}

}  // namespace

MemoryNotificationCenter::MemoryNotificationCenter(std::shared_ptr<ManualClock> clock,
                                                   std::shared_ptr<MemoryFiles> files)
    : clock_(std::move(clock)), files_(std::move(files)) {}

MemoryNotificationCenter::~MemoryNotificationCenter() {
  for (auto& answer : std::exchange(openDialog_, {})) answer(false, cannotAsk());
  for (auto& answer : std::exchange(heldCategories_, {})) answer({});
}

void MemoryNotificationCenter::requestAuthorization(unsigned options, AuthorizationAnswer answer) {
  bool granted = false;
  std::optional<Error> error;
  {
    const std::lock_guard lock(mutex_);
    authorizationRequests_.push_back(options);
    if (status_ == AuthorizationStatus::notDetermined) {
      if (behaviour_ == DialogBehaviour::leavesOpen) {
        openDialog_.push_back(std::move(answer));
        return;
      }
      if (behaviour_ == DialogBehaviour::allows) status_ = AuthorizationStatus::authorized;
      if (behaviour_ == DialogBehaviour::denies) status_ = AuthorizationStatus::denied;
      if (behaviour_ == DialogBehaviour::cannotAsk) error = cannotAsk();
    }
    granted = status_ != AuthorizationStatus::notDetermined && status_ != AuthorizationStatus::denied;
  }
  answer(granted, std::move(error));
}

void MemoryNotificationCenter::getNotificationSettings(
    platform::UniqueFunction<void(platform::NotificationSettings)> answer) {
  answer({authorizationStatus()});
}

void MemoryNotificationCenter::getNotificationCategories(CategoriesAnswer answer) {
  {
    const std::lock_guard lock(mutex_);
    if (holdCategories_) {
      heldCategories_.push_back(std::move(answer));
      return;
    }
  }
  answer(categories());
}

void MemoryNotificationCenter::setNotificationCategories(std::vector<NotificationCategory> categories) {
  // As in a set, the first of an identifier stays.
  std::ranges::stable_sort(categories, {}, &NotificationCategory::identifier);
  const auto same = [](const auto& a, const auto& b) { return a.identifier == b.identifier; };
  categories.erase(std::unique(categories.begin(), categories.end(), same), categories.end());
  const std::lock_guard lock(mutex_);
  categories_ = std::move(categories);
  ++categoryReplacements_;
}

void MemoryNotificationCenter::add(NotificationRequest request) {
  const double now = clock_->uptime();
  const std::lock_guard lock(mutex_);
  added_.push_back(request);
  if (request.trigger && !isPossible(*request.trigger)) return;
  std::erase_if(pending_,
                [&](const Pending& other) { return other.request.identifier == request.identifier; });
  if (!request.trigger) return showLocked(std::move(request));
  dropDeliveredLocked(request.identifier, request.content.attachments);
  const double due = now + request.trigger->seconds;
  pending_.push_back({std::move(request), due});
}

void MemoryNotificationCenter::removePendingNotificationRequests(
    const std::vector<std::string>& identifiers) {
  const std::lock_guard lock(mutex_);
  std::erase_if(pending_, [&](const Pending& one) { return contains(identifiers, one.request.identifier); });
}

void MemoryNotificationCenter::removeDeliveredNotifications(const std::vector<std::string>& identifiers) {
  const std::lock_guard lock(mutex_);
  for (const auto& identifier : identifiers) dropDeliveredLocked(identifier, {});
}

void MemoryNotificationCenter::setDialogBehaviour(DialogBehaviour behaviour) {
  const std::lock_guard lock(mutex_);
  behaviour_ = behaviour;
}

void MemoryNotificationCenter::setAuthorizationStatus(AuthorizationStatus status) {
  const std::lock_guard lock(mutex_);
  status_ = status;
}

AuthorizationStatus MemoryNotificationCenter::authorizationStatus() const {
  const std::lock_guard lock(mutex_);
  return status_;
}

bool MemoryNotificationCenter::answerDialog(bool allow) {
  std::vector<AuthorizationAnswer> waiting;
  {
    const std::lock_guard lock(mutex_);
    if (openDialog_.empty()) return false;
    status_ = allow ? AuthorizationStatus::authorized : AuthorizationStatus::denied;
    waiting = std::exchange(openDialog_, {});
  }
  for (auto& answer : waiting) answer(allow, std::nullopt);
  return true;
}

std::vector<unsigned> MemoryNotificationCenter::authorizationRequests() const {
  const std::lock_guard lock(mutex_);
  return authorizationRequests_;
}

void MemoryNotificationCenter::holdCategoryAnswers(bool hold) {
  const std::lock_guard lock(mutex_);
  holdCategories_ = hold;
}

std::size_t MemoryNotificationCenter::answerHeldCategories() {
  std::vector<CategoriesAnswer> held;
  {
    const std::lock_guard lock(mutex_);
    held = std::exchange(heldCategories_, {});
  }
  for (auto& answer : held) answer(categories());
  return held.size();
}

std::vector<NotificationCategory> MemoryNotificationCenter::categories() const {
  const std::lock_guard lock(mutex_);
  return categories_;
}

std::size_t MemoryNotificationCenter::categoryReplacements() const {
  const std::lock_guard lock(mutex_);
  return categoryReplacements_;
}

std::vector<NotificationRequest> MemoryNotificationCenter::pending() const {
  const std::lock_guard lock(mutex_);
  std::vector<NotificationRequest> all;
  for (const auto& one : pending_) all.push_back(one.request);
  return all;
}

std::vector<NotificationRequest> MemoryNotificationCenter::delivered() const {
  const std::lock_guard lock(mutex_);
  return delivered_;
}

std::vector<NotificationRequest> MemoryNotificationCenter::added() const {
  const std::lock_guard lock(mutex_);
  return added_;
}

void MemoryNotificationCenter::deliver(NotificationRequest request) {
  const std::lock_guard lock(mutex_);
  showLocked(std::move(request));
}

void MemoryNotificationCenter::deliverDue() {
  const double now = clock_->uptime();
  const std::lock_guard lock(mutex_);
  for (;;) {
    const auto next = std::ranges::min_element(pending_, {}, &Pending::due);
    if (next == pending_.end() || next->due > now) return;
    NotificationRequest request = next->request;
    if (request.trigger->repeats) {
      next->due += request.trigger->seconds;
    } else {
      pending_.erase(next);
    }
    showLocked(std::move(request));
  }
}

std::optional<double> MemoryNotificationCenter::nextDue() const {
  const std::lock_guard lock(mutex_);
  const auto next = std::ranges::min_element(pending_, {}, &Pending::due);
  return next == pending_.end() ? std::nullopt : std::optional(next->due);
}

void MemoryNotificationCenter::showLocked(NotificationRequest request) {
  dropDeliveredLocked(request.identifier, request.content.attachments);
  delivered_.push_back(std::move(request));
}

void MemoryNotificationCenter::dropDeliveredLocked(
    const std::string& identifier, const std::vector<platform::NotificationAttachment>& kept) {
  const auto found = std::ranges::find(delivered_, identifier, &NotificationRequest::identifier);
  if (found == delivered_.end()) return;
  for (const auto& attachment : found->content.attachments) {
    if (std::ranges::find(kept, attachment.path, &platform::NotificationAttachment::path) == kept.end()) {
      removeFile(attachment.path);
    }
  }
  delivered_.erase(found);
}

void MemoryNotificationCenter::removeFile(const std::string& path) {
  const auto removed = files_->remove(path);
  const std::string folder = path.substr(0, path.rfind('/')) + "/";
  const bool empty = std::ranges::none_of(
      files_->paths(), [&](const std::string& other) { return other.starts_with(folder); });
  if (removed && empty) (void)files_->remove(folder);
}

}  // namespace VorselKelp::testing_platform
