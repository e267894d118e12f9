#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/VorselBuilder.h"
#include "VorselKelp/platform/ContentExtension.h"
#include "VorselKelp/platform/Platform.h"
#include "VorselKelpSystem/Description.h"
#include "VorselKelpSystem/NotificationCenter.h"
#include "VorselKelpSystem/RunningApplication.h"

struct _GApplication;  // GLib's GApplication

namespace VorselKelp::freedesktop {

struct ApplicationOptions {
  /// What the application wants of the core, on a builder with the description's key and group.
  std::function<void(VorselBuilder&)> configure;
  /// Shows a web page that an opened notification leads to; false leaves it to the desktop's browser, as does
  /// a null one.
  std::function<bool(const std::string& url)> openArticle;
  /// Shows the messages of a campaign, as a carousel for example. Null: opening it opens its first message.
  std::function<void(const platform::DeliveredNotification&)> openCampaign = nullptr;
  /// The user has opened a notification: the application is to show itself. `activationToken`, when the
  /// desktop gave one, lets a window come to the front. Not for buttons that destroy something. May be null.
  std::function<void(const std::string& activationToken)> raise;
  /// A remote notification that shows nothing has come, perhaps in a process that was started for it alone:
  /// what it brings is the application's to handle, or for
  /// VorselKellp::didReciveAdministrativeNotificationWith. Null: it takes none.
  std::function<void(const platform::UserInfo&)> received = nullptr;
  /// There will be no device token, and why; null: a line on standard error. A token that comes goes to
  /// VorselKellp::registerToken by itself.
  std::function<void(const Error& reason)> registrationFailed = nullptr;

  // What an application with windows adds. Null services say that there are none.
  std::shared_ptr<platform::Screen> screen = nullptr;
  std::shared_ptr<platform::ViewPresenter> viewPresenter = nullptr;
  std::shared_ptr<platform::WebViews> webViews = nullptr;
  std::shared_ptr<system::PermissionAsker> asker = nullptr;

  std::shared_ptr<platform::Console> console = nullptr;  ///< null: makeDebugConsole()
  std::string busAddress = {};                           ///< of the session's bus; empty: the environment's
};

/// An application that runs GLib's main loop, with the library installed and started: the process's platform
/// put together from what the description says and the desktop gives. It keeps the badge, shows reminders
/// when they are due, hands taps to the core, and asks again for the configuration when a network comes. Main
/// thread, which waits for no file of the notifications'.
///
/// Where the application's push agent is installed ("<identifier>.Push" can be started by the session's bus)
/// that shows the notifications, wakes for them, and gets the remote ones. Without it this process shows what
/// is due while it runs, and registering for remote notifications fails with the reason.
class Application {
 public:
  /// The action that a tap on a notification activates, "app." before it; its target is (ss), the
  /// notification's identifier and the button's.
  static constexpr const char* responseAction = "vorselkelp-response";
  /// The action by which the push agent hands over a notification that is for the application alone; its
  /// target is the payload as JSON (s).
  static constexpr const char* pushAction = "vorselkelp-push";

  virtual ~Application() = default;

  /// What moves the application: the events of its windows are to be told here.
  [[nodiscard]] virtual system::RunningApplication& running() = 0;
  /// A notification that is kept, for a carousel of the application's; absent: there is none of this
  /// identifier. Answers once, later, unless the application leaves before.
  virtual void notification(
      const std::string& identifier,
      std::function<void(std::optional<platform::DeliveredNotification>)> found) const = 0;
  /// Whether every request has been answered; one that ends sooner loses reports.
  [[nodiscard]] virtual bool idle() const = 0;
  /// Tells the core that the application ends, and takes the platform down. The destructor does the same.
  virtual void leave() = 0;
};

/// For GApplication's signal "startup", which a second start of the application never gets. `application`
/// must outlive what is returned. An error says why there is no library in this process.
[[nodiscard]] VORSELKELP_API Result<std::shared_ptr<Application>> startApplication(
    _GApplication* application, const system::Description& description, ApplicationOptions options);

}  // namespace VorselKelp::freedesktop
