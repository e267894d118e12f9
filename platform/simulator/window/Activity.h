#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace VorselKelp::simulator {

/// Counts what a screen is busy with. Make it with std::make_shared. Main thread.
class Activity : public std::enable_shared_from_this<Activity> {
 public:
  /// `changed` runs whenever something has ended.
  explicit Activity(std::function<void()> changed) : changed_(std::move(changed)) {}

  /// The screen is busy for as long as what is returned lives.
  [[nodiscard]] std::shared_ptr<void> begin() {
    ++count_;
    return {this, [self = shared_from_this()](void*) {
              --self->count_;
              self->changed_();
            }};
  }
  [[nodiscard]] bool idle() const { return count_ == 0; }

 private:
  const std::function<void()> changed_;
  int count_ = 0;
};

}  // namespace VorselKelp::simulator
