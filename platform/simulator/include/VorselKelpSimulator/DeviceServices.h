#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/InAppBrowser.h"
#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelp/platform/NotificationCenter.h"
#include "VorselKelpSimulator/SimulatedDevice.h"
#include "VorselKelpSystem/RunningApplication.h"

namespace VorselKelp::simulator {

/// What the simulated user does when the permission dialog appears.
enum class DialogAnswer { allow, deny, none };

/// Shows the permission dialog and hands on what the user chose. `answer` is what the simulated user taps;
/// with none a real user is waited for.
using PermissionDialog = std::function<void(DialogAnswer answer, std::function<void(bool allowed)> answered)>;

/// The notification centre of one process.
///
/// setNotificationCategories writes the difference between the new set and what this process last read or
/// wrote, so that two processes which add a category each at the same moment both keep theirs; a process that
/// never read the set replaces it as a whole.
class DeviceNotificationCenter : public platform::NotificationCenter {
 public:
  /// Ends the dialog that nobody answered: whoever waits for it hears that the permission was not granted,
  /// and why. To be called when the process ends; the destructor does the same.
  virtual void dismissDialog() = 0;
  /// The dialog is shown by this, on the main thread, instead of by nothing at all. Before the first
  /// question.
  virtual void showDialogWith(PermissionDialog dialog) = 0;
};

VORSELKELP_API std::shared_ptr<DeviceNotificationCenter> makeNotificationCenter(
    std::shared_ptr<SimulatedDevice> device, std::shared_ptr<platform::MainQueue> mainQueue,
    DialogAnswer answer);

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
