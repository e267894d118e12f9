#include "VorselKelpSimulatorScreen/WindowScreen.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "VorselKelpFreedesktop/BluezLocation.h"
#include "VorselKelpFreedesktop/BusNotifications.h"
#include "VorselKelpFreedesktop/LauncherBadge.h"
#include "VorselKelpWebKit/WebViews.h"
#include "window/Activity.h"
#include "window/GtkWaiter.h"
#include "window/ProcessWindow.h"

namespace VorselKelp::simulator {
namespace {

/// How long a page gets to be painted after it was loaded.
constexpr double paintingSeconds = 0.3;

/// Pages that keep the screen busy while they load, and the simulated user who answers them.
class AnsweredPages final : public platform::WebViews, public std::enable_shared_from_this<AnsweredPages> {
 public:
  AnsweredPages(std::shared_ptr<platform::MainQueue> mainQueue, std::shared_ptr<Activity> activity,
                PromptAnswer answer, std::function<void(const std::string&)> picture)
      : mainQueue_(std::move(mainQueue)),
        activity_(std::move(activity)),
        answer_(answer),
        picture_(std::move(picture)) {}

  std::shared_ptr<ui::WebView> makeWebView(ui::WebViewConfiguration configuration, ui::Rect frame) override {
    // What keeps the screen busy for as long as the page is there.
    const auto waiting = std::make_shared<std::shared_ptr<void>>();
    auto view = webkit::makeWebView(
        std::move(configuration),
        {[activity = activity_] { return activity->begin(); },
         [weak = weak_from_this(), waiting](ui::WebView& page, const std::vector<std::string>& handlers,
                                            std::shared_ptr<void> busy) {
           if (std::ranges::find(handlers, platform::answerBridge) == handlers.end()) return;
           if (const auto self = weak.lock()) self->loaded(page, waiting, std::move(busy));
         }});
    view->frame = frame;
    return view;
  }

 private:
  /// The simulated user reads the page and answers it, as the page's own buttons would.
  void loaded(ui::WebView& page, const std::shared_ptr<std::shared_ptr<void>>& waiting,
              std::shared_ptr<void> busy) {
    const auto answer = [picture = picture_, choice = answer_, weak = page.weak_from_this(), waiting,
                         busy = std::move(busy)] {
      if (picture) picture("prompt");
      const auto shown = weak.lock();
      if (!shown) return;
      // A real user takes the time that it takes.
      if (choice == PromptAnswer::none) {
        *waiting = busy;
        return;
      }
      const std::string event = choice == PromptAnswer::ok ? "pns.htmlOK" : "pns.htmlCancel";
      static_cast<ui::WebView&>(*shown).evaluateJavaScript(
          "window.dispatchEvent(new Event('" + event + "'));null", [busy](const Result<JSONAny>&) {});
    };
    if (picture_) {
      mainQueue_->asyncAfter(paintingSeconds, answer);
    } else {
      mainQueue_->async(answer);
    }
  }

  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const std::shared_ptr<Activity> activity_;
  const PromptAnswer answer_;
  const std::function<void(const std::string&)> picture_;
};

/// The browser's pages: a picture is taken of each.
class BrowsedPages final : public platform::WebViews {
 public:
  BrowsedPages(std::shared_ptr<platform::MainQueue> mainQueue, std::shared_ptr<Activity> activity,
               std::function<void(const std::string&)> picture)
      : mainQueue_(std::move(mainQueue)), activity_(std::move(activity)), picture_(std::move(picture)) {}

  std::shared_ptr<ui::WebView> makeWebView(ui::WebViewConfiguration configuration, ui::Rect frame) override {
    auto view = webkit::makeWebView(
        std::move(configuration),
        {[activity = activity_] { return activity->begin(); },
         [picture = picture_, queue = mainQueue_](ui::WebView&, const std::vector<std::string>&,
                                                  const std::shared_ptr<void>& busy) {
           if (picture) queue->asyncAfter(paintingSeconds, [picture, busy] { picture("browser"); });
         }});
    view->frame = frame;
    return view;
  }

 private:
  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const std::shared_ptr<Activity> activity_;
  const std::function<void(const std::string&)> picture_;
};

/// As large as the simulated device's, refreshed as the window is.
class WindowDisplay final : public platform::Screen {
 public:
  WindowDisplay(const Manifest& manifest, std::weak_ptr<gtk::Stage> stage)
      : width_(manifest.screenWidth), height_(manifest.screenHeight), stage_(std::move(stage)) {}

  double width() override { return width_; }
  double height() override { return height_; }
  std::unique_ptr<platform::DisplayLink> makeDisplayLink(std::function<void(double)> tick) override {
    if (const auto stage = stage_.lock()) return stage->screen()->makeDisplayLink(std::move(tick));
    return std::make_unique<SilentLink>();
  }

 private:
  struct SilentLink final : platform::DisplayLink {
    void setPaused(bool) override {}
  };
  const double width_;
  const double height_;
  const std::weak_ptr<gtk::Stage> stage_;
};

class WindowScreen final : public ProcessScreen {
 public:
  explicit WindowScreen(WindowScreenOptions options) : options_(options) {}

  std::shared_ptr<posix::LoopWaiter> makeWaiter() override { return std::make_shared<GtkWaiter>(); }

  Result<Services> open(Setting setting) override {
    if (!gtk_init_check()) return Error{"There is no display to open a window on; set DISPLAY"};
    window_ = std::make_shared<ProcessWindow>(setting.manifest.bundleIdentifier, setting.size.width,
                                              setting.size.height);
    window_->whenLeft([this, loop = setting.loop] {
      left_ = true;
      loop->wake();
    });
    window_->show(setting.root, setting.screenChanged);
    activity_ = std::make_shared<Activity>([loop = setting.loop] { loop->wake(); });
    Services services;
    services.screen = std::make_shared<WindowDisplay>(setting.manifest, window_->stage());
    services.viewPresenter = window_->stage()->presenter();
    services.webViews =
        std::make_shared<AnsweredPages>(setting.loop, activity_, setting.promptAnswer, setting.picture);
    services.inAppBrowser = window_->stage()->makeBrowser(
        std::make_shared<BrowsedPages>(setting.loop, activity_, setting.picture));
    if (setting.kind == ProcessKind::application) {
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
    return window_->writePicture(path);
  }
  void close() override {
    notifications_ = nullptr;
    badge_ = nullptr;
    window_ = nullptr;
  }

 private:
  PermissionDialog permissionDialog(const Setting& setting) {
    return [weak = std::weak_ptr(window_), activity = activity_, loop = setting.loop,
            picture = setting.picture, name = setting.manifest.bundleIdentifier](
               DialogAnswer answer, const std::function<void(bool)>& answered) {
      const auto window = weak.lock();
      if (!window) return;
      const std::shared_ptr<gtk::PermissionQuestion> question = window->stage()->askPermission(
          name, [answered, busy = activity->begin()](std::optional<bool> allowed) {
            if (allowed) answered(*allowed);
          });
      if (!question || answer == DialogAnswer::none) return;
      loop->asyncAfter(picture ? paintingSeconds : 0, [question, picture, answer] {
        if (picture) picture("dialog");
        question->tap(answer == DialogAnswer::allow);
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

  const WindowScreenOptions options_;
  std::shared_ptr<ProcessWindow> window_;
  bool left_ = false;  ///< the user has closed the window
  std::shared_ptr<Activity> activity_;
  std::shared_ptr<freedesktop::BusNotifications> notifications_;
  std::shared_ptr<freedesktop::LauncherBadge> badge_;
};

}  // namespace

std::shared_ptr<ProcessScreen> makeWindowScreen(WindowScreenOptions options) {
  return std::make_shared<WindowScreen>(options);
}

}  // namespace VorselKelp::simulator
