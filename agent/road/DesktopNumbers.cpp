#include "road/DesktopNumbers.h"

#include <utility>

#include "VorselKelpFreedesktop/DesktopPorts.h"
#include "VorselKelpPosix/LineSink.h"

namespace VorselKelp::agent {
namespace {

constexpr const char* notificationServer = "org.freedesktop.Notifications";

}  // namespace

void DesktopNumbers::watch(std::function<void()> changed) {
  bus_.watchOwners(notificationServer, false,
                   [this, changed = std::move(changed)](const std::string&, const std::string& owner) {
                     server_ = owner;
                     if (!owner.empty()) changed();
                   });
}

void DesktopNumbers::find(platform::UniqueFunction<void()> found) {
  bus_.findOwner(notificationServer, [this, found = std::move(found)](std::string owner) mutable {
    server_ = std::move(owner);
    found();
  });
}

void DesktopNumbers::resume(system::NotificationStore& store, freedesktop::BusNotifications& notifications) {
  const auto shown = state_.state().shown(desktop());
  if (!shown) return posix::standardErrorLines()(shown.error().description);
  for (const auto& [identifier, number, server] : *shown) {
    auto request = store.tappable(identifier);
    if (!request) {
      gone(identifier);
      continue;
    }
    auto buttons = freedesktop::buttonsOf(*request, store.category(request->content.categoryIdentifier));
    notifications.resume(*std::move(request), std::move(buttons), number);
  }
}

void DesktopNumbers::numbered(const std::string& identifier, std::uint32_t number) {
  const auto note = [this, identifier, number] { state_.note({identifier, number, desktop()}); };
  // Without a name it was started for this one.
  server_.empty() ? find(note) : note();
}

}  // namespace VorselKelp::agent
