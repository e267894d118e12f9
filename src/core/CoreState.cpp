#include "core/CoreState.h"

#include <utility>

namespace VorselKelp {

std::string CoreState::appGroupSetting() const {
  const std::lock_guard lock(mutex_);
  return appGroupSetting_;
}

void CoreState::setAppGroupSetting(std::string group) {
  const std::lock_guard lock(mutex_);
  appGroupSetting_ = std::move(group);
}

std::shared_ptr<VorselKellpDelegate> CoreState::delegate() const {
  const std::lock_guard lock(mutex_);
  return delegate_.lock();
}

void CoreState::setDelegate(std::weak_ptr<VorselKellpDelegate> delegate) {
  const std::lock_guard lock(mutex_);
  delegate_ = std::move(delegate);
}

std::shared_ptr<VorselConfig> CoreState::configuration() const {
  const std::lock_guard lock(mutex_);
  return configuration_;
}

void CoreState::setConfiguration(std::shared_ptr<VorselConfig> configuration) {
  const std::lock_guard lock(mutex_);
  configuration_.swap(configuration);  // the old one, if any, goes after the lock
}

std::map<std::string, std::string> CoreState::userValues() const {
  const std::lock_guard lock(mutex_);
  return userValues_;
}

void CoreState::setUserValue(const std::string& key, std::string value) {
  const std::lock_guard lock(mutex_);
  userValues_[key] = std::move(value);
}

std::optional<SessionValues> CoreState::countedSession() const {
  const std::lock_guard lock(mutex_);
  return countedSession_;
}

void CoreState::setCountedSession(SessionValues session) {
  const std::lock_guard lock(mutex_);
  countedSession_ = std::move(session);
}

}  // namespace VorselKelp
