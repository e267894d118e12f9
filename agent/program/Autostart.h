#pragma once

#include <memory>
#include <string>
#include <vector>

#include "VorselKelpFreedesktop/BackgroundPortal.h"
#include "state/State.h"

namespace VorselKelp::agent {

/// Has the agent started with the user's session while something is pending. Main thread.
class Autostart {
 public:
  virtual ~Autostart() = default;

  /// Does nothing when it is so already. What prevents it is a line on standard error, once.
  virtual void want(bool wanted) = 0;
  /// Whether nothing is under way that the agent's end would lose.
  [[nodiscard]] virtual bool idle() const = 0;
};

/// By an entry in the user's autostart folder. `service` is the agent's name on the bus, `name` its
/// application's, for the user; the file is absolute.
std::unique_ptr<Autostart> makeAutostartEntry(const std::string& service, std::string name,
                                              std::string descriptionFile);

/// By the desktop's portal, for an agent in a sandbox, whose folders no session reads. The portal, which may
/// ask the user, is asked once for each change: what it has heard is kept in the state, which must outlive
/// the object. Nobody waits for its answer.
std::unique_ptr<Autostart> makePortalAutostart(State& state,
                                               std::shared_ptr<freedesktop::BackgroundPortal> portal,
                                               std::vector<std::string> commandLine);

}  // namespace VorselKelp::agent
