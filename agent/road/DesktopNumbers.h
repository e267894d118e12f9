#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "VorselKelpFreedesktop/BusNotifications.h"
#include "VorselKelpSystem/NotificationStore.h"
#include "bus/Bus.h"
#include "state/StateThread.h"

namespace VorselKelp::agent {

/// The numbers that the desktop's server gave notifications, kept for the agent's next life: so it goes on
/// with what this one showed. Another server, or another session, counts anew. Main thread.
class DesktopNumbers {
 public:
  DesktopNumbers(Bus& bus, StateThread& state) : bus_(bus), state_(state) {}

  /// `changed` comes whenever somebody begins to show notifications.
  void watch(std::function<void()> changed);
  /// Before anything is shown: who shows now.
  void find(platform::UniqueFunction<void()> found);
  /// Hands over what an earlier agent showed and nobody has touched since.
  void resume(system::NotificationStore& store, freedesktop::BusNotifications& notifications);

  void numbered(const std::string& identifier, std::uint32_t number);
  void gone(const std::string& identifier) { state_.note({identifier, 0, {}}); }

 private:
  [[nodiscard]] std::string desktop() const { return bus_.guid() + server_; }

  Bus& bus_;
  StateThread& state_;
  std::string server_;  ///< the server's connection; empty: none runs
};

}  // namespace VorselKelp::agent
