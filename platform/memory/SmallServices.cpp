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
  const std::lock_guard lock(mutex_);
  pages_.push_back(url);
}

std::vector<std::string> RecordingBrowser::pages() const {
  const std::lock_guard lock(mutex_);
  return pages_;
}

}  // namespace VorselKelp::testing_platform
