#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/JSONAny.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/Notification.h"
#include "VorselKelp/platform/ViewPresenter.h"
#include "VorselKelpSimulator/Manifest.h"

namespace VorselKelp::simulator {

class OperationTable;
class ProcessScreen;

/// The process that an application runs in. It lives as long as runApplication().
class ApplicationProcess {
 public:
  virtual ~ApplicationProcess() = default;

  [[nodiscard]] virtual const Manifest& manifest() const = 0;
  /// The controller of the application's only window. Main thread.
  virtual std::shared_ptr<ui::ViewController> rootController() = 0;
  /// What shows the application's screens. Main thread.
  virtual std::shared_ptr<platform::ViewPresenter> presenter() = 0;
  /// A screen of the application came or went that the presenter does not show: it tells of those. Main
  /// thread.
  virtual void screenAppeared() = 0;
  virtual void screenDisappeared() = 0;
  /// Tells whoever started the process (such as brellixctl) that the library called its delegate. Any thread.
  virtual void noteDelegateCall(std::string_view name, JSONAny::List arguments) = 0;
};

/// What the system calls in an application. All calls come on the main thread, after the process's platform
/// has been installed in the library.
class ApplicationDelegate {
 public:
  virtual ~ApplicationDelegate() = default;

  /// The screen that the application's window starts with; comes before everything else, and before the
  /// library may be used.
  virtual std::shared_ptr<ui::ViewController> makeRootController() {
    return std::make_shared<ui::ViewController>();
  }
  /// Comes first in every process of the application: the place for what has to stand before the system
  /// delivers anything, such as the library's delegate and the application group.
  virtual void willFinishLaunching(ApplicationProcess& process) { (void)process; }
  /// The application starts: the place to initialize the library. It does not come in a process that stands
  /// for an application which was started before and now only gets a response.
  virtual void didFinishLaunching(ApplicationProcess& process) = 0;
  /// The simulator found nothing left to do after the start: a good moment to ask the user something. No
  /// system tells this; on a desktop, gtk::Attached::whenReady() is the event that the core is up.
  virtual void simulatorIsQuiet(ApplicationProcess& process) { (void)process; }

  virtual void didRegisterForRemoteNotifications(std::span<const std::uint8_t> token) { (void)token; }
  virtual void didFailToRegisterForRemoteNotifications(const Error& error) { (void)error; }

  /// The user tapped a notification or one of its buttons. `handle` says whether the library is to open what
  /// the notification leads to; `completion` takes what it gives back instead.
  virtual void didReceive(const platform::NotificationResponse& response, bool handle,
                          std::function<void(std::optional<std::string>)> completion) {
    (void)response, (void)handle, (void)completion;
  }
  /// A silent remote notification came, for which the application was started in the background.
  virtual void didReceiveRemoteNotification(ApplicationProcess& process, const platform::UserInfo& userInfo) {
    (void)process, (void)userInfo;
  }
};

/// An application's main function: composes the process's platform from the command line, installs it in the
/// library, and leads `application` through its life. Returns the exit status: 0, 1 when the process could
/// not start, 2 for a command line that says nothing sensible.
///
///   --home DIR --app FILE            the simulated device and the application's manifest
///   --answer allow|deny              what the user answers when asked for the permission (default: nothing)
///   --call NAME=JSON                 an operation of `operations` with a list of arguments; may be repeated
///   --beacon EVENT                   a beacon event, such as enter:UUID, once the start is through; may be
///                                    repeated
///   --prompt ok|cancel               what the user answers on the publisher's permission page (default:
///   nothing)
///   --script-host URL                where that page's script is, in place of the manifest's "script"
///   --pictures DIR                   pictures of the permission page and the browser, where there is a
///   window
///   --stay                           goes on until the user closes the window, or the time ends
///   --tap ID [--action A] [--no-handle]   no start: the user taps this notification
///   --notify ID                      no start: this notification is shown on the desktop, and the process
///                                    waits for what the user does with it
///   --background [--payload FILE]    a start in the background, for this silent remote notification
///   (default:
///                                    standard input)
///   --time-limit S                   its work ends then, if not before (default 20)
///   --channel FD                     reports as JSON lines to this descriptor; without it the console is
///   stdout
///
/// The process ends when no work and no request is left, or at its time limit; saying goodbye takes it at
/// most 2 seconds more. An --action may be empty: it is a button's identifier, not the notification itself.
///
/// Without a `screen` nothing is shown, and what would be is recorded.
VORSELKELP_API int runApplication(int argc, const char* const* argv, ApplicationDelegate& application,
                                  const OperationTable& operations);
VORSELKELP_API int runApplication(int argc, const char* const* argv, ApplicationDelegate& application,
                                  const OperationTable& operations, ProcessScreen& screen);

}  // namespace VorselKelp::simulator
