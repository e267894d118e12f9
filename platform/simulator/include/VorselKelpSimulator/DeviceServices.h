#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/InAppBrowser.h"
#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelpSimulator/SimulatedDevice.h"
#include "VorselKelpSystem/NotificationCenter.h"
#include "VorselKelpSystem/RunningApplication.h"

namespace VorselKelp::simulator {

/// What the simulated user does when the permission dialog appears.
enum class DialogAnswer { allow, deny, none };

/// Shows the permission dialog and hands on what the user chose. `answer` is what the simulated user taps;
/// with none a real user is waited for.
using PermissionDialog = std::function<void(DialogAnswer answer, std::function<void(bool allowed)> answered)>;

/// The simulated user, who is asked for the permission.
class SimulatedUser : public system::PermissionAsker {
 public:
  /// The dialog is shown by this instead of by nothing at all. Before the first question; null in the end,
  /// for what shows it may hold the screen.
  virtual void showDialogWith(PermissionDialog dialog) = 0;
};

/// A user who answers what `answer` says; with none, and without a dialog, the question stays open.
VORSELKELP_API std::shared_ptr<SimulatedUser> makeSimulatedUser(DialogAnswer answer);

/// The notification centre of one process. Its time is moved by hand, and what it holds is shown by commands
/// alone.
VORSELKELP_API std::shared_ptr<system::NotificationCenter> makeNotificationCenter(
    std::shared_ptr<SimulatedDevice> device, std::shared_ptr<platform::MainQueue> mainQueue,
    std::shared_ptr<SimulatedUser> user);

/// `registered` gets the token, or the reason why there is none, on the main queue. `opened` learns which
/// addresses leave the application. `badge` may be null.
VORSELKELP_API std::shared_ptr<system::RunningApplication> makeApplication(
    std::shared_ptr<SimulatedDevice> device, std::shared_ptr<platform::MainQueue> mainQueue,
    std::function<void(Result<std::string>)> registered, std::function<void(const std::string& url)> opened,
    std::shared_ptr<system::Badge> badge = nullptr);

/// A browser without a window: `show` learns which page would be on the screen.
VORSELKELP_API std::shared_ptr<platform::InAppBrowser> makeRecordingBrowser(
    std::function<void(const std::string& url)> show);

}  // namespace VorselKelp::simulator
