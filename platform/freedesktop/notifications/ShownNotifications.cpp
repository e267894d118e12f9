#include "notifications/ShownNotifications.h"

#include <algorithm>
#include <utility>

namespace VorselKelp::freedesktop {
namespace {

auto called(const std::string& identifier) {
  return [&](const ShownNotification& shown) { return shown.request.identifier == identifier; };
}

}  // namespace

bool ShownNotifications::any(bool history) const {
  return std::ranges::any_of(shown_, [&](const auto& shown) { return history || !shown.expired; });
}

std::uint32_t ShownNotifications::numberOf(const std::string& identifier) const {
  const auto found = std::ranges::find_if(shown_, called(identifier));
  return found == shown_.end() ? 0 : found->number;
}

bool ShownNotifications::resumed(const std::string& identifier) const {
  const auto found = std::ranges::find_if(shown_, called(identifier));
  return found != shown_.end() && found->resumed;
}

ShownNotification* ShownNotifications::find(std::uint32_t number) {
  const auto found = std::ranges::find(shown_, number, &ShownNotification::number);
  return found == shown_.end() ? nullptr : &*found;
}

std::optional<ShownNotification> ShownNotifications::take(const std::string& identifier) {
  const auto found = std::ranges::find_if(shown_, called(identifier));
  if (found == shown_.end()) return std::nullopt;
  auto taken = std::move(*found);
  shown_.erase(found);
  return taken;
}

std::vector<std::string> ShownNotifications::put(ShownNotification shown) {
  take(shown.request.identifier);
  std::vector<std::string> gone;
  const auto forget = [&](std::string identifier) {
    take(identifier);
    gone.push_back(std::move(identifier));
  };
  if (const auto* other = find(shown.number)) forget(other->request.identifier);
  if (shown_.size() == most) forget(shown_.front().request.identifier);
  shown_.push_back(std::move(shown));
  return gone;
}

std::vector<std::string> ShownNotifications::clear() {
  std::vector<std::string> gone;
  for (auto& shown : std::exchange(shown_, {})) gone.push_back(std::move(shown.request.identifier));
  return gone;
}

}  // namespace VorselKelp::freedesktop
