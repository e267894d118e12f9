#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/VorselBuilder.h"
#include "VorselKelp/platform/ContentExtension.h"
#include "VorselKelp/platform/WebViews.h"
#include "VorselKelp/ui/ViewController.h"

using GtkApplication = struct _GtkApplication;
using GtkOverlay = struct _GtkOverlay;

namespace VorselKelp::gtk {

struct AttachOptions {
  /// What the application wants of the core, on a builder with the description's key and group.
  std::function<void(VorselBuilder&)> configure;
  /// The overlay, in a window of the application's, over which the library shows its screens; asked each
  /// time. Null while there is no window.
  std::function<GtkOverlay*()> overlay;
  /// Shows a web page that an opened notification leads to; false, or a null function, leaves it to the
  /// desktop's browser.
  std::function<bool(const std::string& url)> openArticle = nullptr;
  /// Shows the messages of a campaign, by carousel() in a window for example. Null: its first message is
  /// opened.
  std::function<void(const platform::DeliveredNotification&)> openCampaign = nullptr;
  /// A remote notification that shows nothing has come; see freedesktop::ApplicationOptions.
  std::function<void(const platform::UserInfo&)> received = nullptr;
  /// There will be no device token, and why; null: a line on standard error.
  std::function<void(const Error& reason)> registrationFailed = nullptr;
  /// The engine for the publisher's permission page; null: the user is asked without one.
  std::shared_ptr<platform::WebViews> webViews = nullptr;
};

/// The library in an application that runs GTK. Main thread.
class Attached {
 public:
  virtual ~Attached() = default;

  /// Whether the library is there: from "startup" to "shutdown", unless something kept it away. Without it a
  /// call of the core's stops the process.
  [[nodiscard]] virtual bool started() const = 0;
  /// Runs `ready` once when the core is up: the remote configuration has come. Before the application has
  /// started too.
  virtual void whenReady(std::function<void()> ready) = 0;
  /// Asks whether the application may notify: by the publisher's page first where there is one, then by a
  /// question over the window. Nothing when the user has decided.
  virtual void askForPermission() = 0;
  /// Shows a screen of the library's over the window, an interstitial for example. Nothing without a window.
  virtual void present(const std::shared_ptr<ui::ViewController>& screen) = 0;
  /// A notification that is kept, for carousel(); absent: there is none of this identifier. Answers once,
  /// later as a rule, unless the application shuts down before.
  using Found = std::function<void(std::optional<platform::DeliveredNotification>)>;
  virtual void notification(const std::string& identifier, Found found) const = 0;
  /// A page of the application's own within a window counts as a screen. Windows that are mapped are counted
  /// without it.
  virtual void screenAppeared() = 0;
};

/// Connects the library to an application that has not started yet: at "startup", which a second start of the
/// application never sees, the platform is put together and the core started; windows that come and go are
/// the life cycle and the screens; "shutdown" leaves the core. `description` is a file, see
/// VorselKelpSystem/Description.h. What is returned must live as long as the application runs; an error,
/// which the application survives without the library, is a line on standard error.
[[nodiscard]] VORSELKELP_API std::shared_ptr<Attached> attach(GtkApplication* application,
                                                              std::string description, AttachOptions options);

}  // namespace VorselKelp::gtk
