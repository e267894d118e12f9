#include "VorselKelpDesktop/DesktopScreen.h"

#include <cstdlib>
#include <utility>

#include "VorselKelpFreedesktop/BluezLocation.h"
#include "VorselKelpFreedesktop/BusNotifications.h"
#include "VorselKelpFreedesktop/LauncherBadge.h"
#include "screen/DesktopPresenter.h"
#include "screen/DesktopWindow.h"
#include "screen/FrameLink.h"
#include "screen/GtkWaiter.h"
#include "screen/PageSheet.h"
#include "screen/PermissionSheet.h"
#include "web/DesktopWebView.h"

namespace VorselKelp::desktop {
namespace {

class DesktopWebViews final : public platform::WebViews,
                              public std::enable_shared_from_this<DesktopWebViews> {
 public:
  DesktopWebViews(std::shared_ptr<platform::MainQueue> mainQueue, std::shared_ptr<Activity> activity,
                  simulator::PromptAnswer answer, std::function<void(const std::string&)> picture)
      : mainQueue_(std::move(mainQueue)),
        activity_(std::move(activity)),
        answer_(answer),
        picture_(std::move(picture)) {}

  std::shared_ptr<ui::WebView> makeWebView(ui::WebViewConfiguration configuration, ui::Rect frame) override {
    auto view = std::make_shared<DesktopWebView>(
        std::move(configuration), activity_,
        [weak = weak_from_this()](DesktopWebView& page, std::shared_ptr<void> busy) {
          if (const auto self = weak.lock()) self->loaded(page, std::move(busy));
        });
    view->frame = frame;
    return view;
  }

 private:
  /// The simulated user reads the page and answers it, as the page's own buttons would.
  void loaded(DesktopWebView& view, std::shared_ptr<void> busy) {
    if (!view.hears(platform::answerBridge)) return;
    const auto page = std::static_pointer_cast<DesktopWebView>(view.shared_from_this());
    const auto answer = [picture = picture_, choice = answer_, weak = std::weak_ptr(page),
                         busy = std::move(busy)] {
      if (picture) picture("prompt");
      const auto shown = weak.lock();
      if (!shown) return;
      // A real user takes the time that it takes.
      if (choice == simulator::PromptAnswer::none) return shown->keepBusy(busy);
      const std::string event = choice == simulator::PromptAnswer::ok ? "pns.htmlOK" : "pns.htmlCancel";
      shown->evaluateJavaScript("window.dispatchEvent(new Event('" + event + "'));null",
                                [busy](const Result<JSONAny>&) {});
    };
    if (picture_) {
      mainQueue_->asyncAfter(paintingSeconds, answer);
    } else {
      mainQueue_->async(answer);
    }
  }

  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const std::shared_ptr<Activity> activity_;
  const simulator::PromptAnswer answer_;
  const std::function<void(const std::string&)> picture_;
};

class DesktopScreen final : public simulator::ProcessScreen {
 public:
  explicit DesktopScreen(DesktopOptions options) : options_(options) {}

  std::shared_ptr<posix::LoopWaiter> makeWaiter() override { return std::make_shared<GtkWaiter>(); }

  Result<Services> open(Setting setting) override {
    if (!gtk_init_check()) return Error{"There is no display to open a window on; set DISPLAY"};
    window_ = std::make_shared<DesktopWindow>(setting.manifest.bundleIdentifier, setting.size.width,
                                              setting.size.height);
    window_->whenLeft([this, loop = setting.loop] {
      left_ = true;
      loop->wake();
    });
    window_->show(setting.root);
    activity_ = std::make_shared<Activity>([loop = setting.loop] { loop->wake(); });
    Services services;
    services.screen = std::make_shared<DesktopDisplay>(setting.manifest, window_);
    services.viewPresenter = std::make_shared<DesktopPresenter>(window_, setting.root, setting.screenChanged);
    services.webViews =
        std::make_shared<DesktopWebViews>(setting.loop, activity_, setting.promptAnswer, setting.picture);
    services.inAppBrowser = std::make_shared<PageSheetBrowser>(window_, setting.loop, activity_,
                                                               setting.picture, setting.screenChanged);
    if (setting.kind == simulator::ProcessKind::application) {
      services.permissionDialog = permissionDialog(setting);
      if (options_.bluetoothBeacons) services.location = freedesktop::makeBluezLocation(setting.loop);
      joinSession(setting, services);
    }
    return services;
  }

  [[nodiscard]] bool visible() const override { return window_ != nullptr; }
  bool drawn() override {
    if (!window_ || left_) return true;
    const bool told = (!notifications_ || notifications_->idle()) && (!badge_ || badge_->idle());
    return window_->mapped() && window_->settled() && activity_->idle() && told;
  }
  [[nodiscard]] bool left() const override { return left_ || !window_; }
  Status writePicture(const std::string& path) override {
    if (!window_) return Error{"The screen is not open"};
    window_->flush();
    return window_->writePicture(path);
  }
  void close() override {
    notifications_ = nullptr;
    badge_ = nullptr;
    window_ = nullptr;
  }

 private:
  simulator::PermissionDialog permissionDialog(const Setting& setting) {
    return [weak = std::weak_ptr(window_), activity = activity_, loop = setting.loop,
            picture = setting.picture, name = setting.manifest.bundleIdentifier](
               simulator::DialogAnswer answer, const std::function<void(bool)>& answered) {
      const auto window = weak.lock();
      if (!window) return;
      const auto shown = std::make_shared<std::weak_ptr<PermissionSheet>>();
      const auto sheet = std::make_shared<PermissionSheet>(
          name, [weak, shown, answered, busy = activity->begin()](bool allowed) {
            const auto closed = shown->lock();
            if (const auto open = weak.lock(); open && closed) open->remove(*closed);
            answered(allowed);
          });
      *shown = sheet;
      (void)sheet->view();
      window->push(sheet);
      if (answer == simulator::DialogAnswer::none) return;
      loop->asyncAfter(picture ? paintingSeconds : 0, [shown, picture, answer] {
        if (picture) picture("dialog");
        if (const auto open = shown->lock()) open->button(answer == simulator::DialogAnswer::allow)->tap();
      });
    };
  }

  /// A session without a bus shows neither notifications nor badges; the window does without.
  void joinSession(const Setting& setting, Services& services) {
    const char* bus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (bus == nullptr || *bus == '\0') return;
    const auto& identifier = setting.manifest.bundleIdentifier;
    badge_ = freedesktop::makeLauncherBadge(identifier, setting.loop);
    services.badge = [badge = badge_](std::int64_t value) { badge->setBadge(value); };
    if (!setting.responded) return;
    notifications_ =
        freedesktop::makeBusNotifications({identifier, identifier, {}, {}}, setting.loop, setting.responded);
    services.notify = [notifications = notifications_](platform::NotificationRequest request,
                                                       platform::NotificationCategory category,
                                                       platform::UniqueFunction<void(Status)> answer) {
      notifications->show(std::move(request), std::move(category), std::move(answer));
    };
  }

  const DesktopOptions options_;
  std::shared_ptr<DesktopWindow> window_;
  bool left_ = false;  ///< the user has closed the window
  std::shared_ptr<Activity> activity_;
  std::shared_ptr<freedesktop::BusNotifications> notifications_;
  std::shared_ptr<freedesktop::LauncherBadge> badge_;
};

}  // namespace

std::shared_ptr<simulator::ProcessScreen> makeDesktopScreen(DesktopOptions options) {
  return std::make_shared<DesktopScreen>(options);
}

}  // namespace VorselKelp::desktop
