#include "VorselKelpTesting/SmallServices.h"

#include <algorithm>

namespace VorselKelp::testing_platform {

void SettableDevice::set(Values values) {
  const std::lock_guard lock(mutex_);
  values_ = std::move(values);
}

SettableDevice::Values SettableDevice::values() const {
  const std::lock_guard lock(mutex_);
  return values_;
}

std::optional<std::string> SettableDevice::environmentVariable(const std::string& name) {
  const std::lock_guard lock(mutex_);
  const auto found = values_.environment.find(name);
  return found == values_.environment.end() ? std::nullopt : std::optional(found->second);
}

void SettableScreen::set(double width, double height) {
  const std::lock_guard lock(mutex_);
  width_ = width;
  height_ = height;
}

double SettableScreen::width() {
  const std::lock_guard lock(mutex_);
  return width_;
}

double SettableScreen::height() {
  const std::lock_guard lock(mutex_);
  return height_;
}

/// Links are the main thread's, and may come and go while they tick.
class SettableScreen::Link final : public platform::DisplayLink {
 public:
  Link(std::shared_ptr<std::vector<Link*>> links, std::function<void(double)> tick)
      : links_(std::move(links)), tick_(std::move(tick)) {
    links_->push_back(this);
  }
  ~Link() override { std::erase(*links_, this); }
  void setPaused(bool paused) override { paused_ = paused; }

  [[nodiscard]] bool paused() const { return paused_; }
  void tick(double seconds) {
    const auto tick = tick_;
    tick(seconds);
  }

 private:
  std::shared_ptr<std::vector<Link*>> links_;
  std::function<void(double)> tick_;
  bool paused_ = true;
};

std::unique_ptr<platform::DisplayLink> SettableScreen::makeDisplayLink(std::function<void(double)> tick) {
  return std::make_unique<Link>(links_, std::move(tick));
}

void SettableScreen::refresh(double seconds) {
  const auto links = *links_;
  for (auto* link : links) {
    if (std::ranges::find(*links_, link) != links_->end() && !link->paused()) link->tick(seconds);
  }
}

std::size_t SettableScreen::runningLinks() {
  return static_cast<std::size_t>(std::ranges::count_if(*links_, [](Link* link) { return !link->paused(); }));
}

std::uint32_t DeterministicRandom::below(std::uint32_t bound) {
  const std::lock_guard lock(mutex_);
  // A linear congruence modulo 2^64; its high half is good enough, and scaling it keeps the numbers even.
  state_ = state_ * 6364136223846793005U + 1442695040888963407U;
  return static_cast<std::uint32_t>(((state_ >> 32) * std::max(bound, 1U)) >> 32);
}

void RecordingConsole::print(std::string_view text) {
  const std::lock_guard lock(mutex_);
  texts_.emplace_back(text);
}

std::vector<std::string> RecordingConsole::texts() const {
  const std::lock_guard lock(mutex_);
  return texts_;
}

std::size_t RecordingConsole::count(std::string_view text) const {
  const std::lock_guard lock(mutex_);
  return static_cast<std::size_t>(std::ranges::count(texts_, text));
}

void RecordingConsole::clear() {
  const std::lock_guard lock(mutex_);
  texts_.clear();
}

void RecordingBrowser::present(const std::string& url) {
  {
    const std::lock_guard lock(mutex_);
    pages_.push_back(url);
  }
  if (application_) application_->screenAppears();
}

std::vector<std::string> RecordingBrowser::pages() const {
  const std::lock_guard lock(mutex_);
  return pages_;
}

}  // namespace VorselKelp::testing_platform
