#include "VorselKelpFreedesktop/Application.h"

#include <gio/gio.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <utility>

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpFreedesktop/BluezLocation.h"
#include "VorselKelpFreedesktop/DesktopPorts.h"
#include "VorselKelpFreedesktop/HostConsole.h"
#include "VorselKelpFreedesktop/LauncherBadge.h"
#include "VorselKelpFreedesktop/MainQueue.h"
#include "VorselKelpFreedesktop/PortalNotifications.h"
#include "VorselKelpPosix/CurlURLSession.h"
#include "VorselKelpPosix/DiskFileManager.h"
#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpPosix/PixbufImageDecoder.h"
#include "VorselKelpPosix/Services.h"
#include "VorselKelpPosix/SqliteUserDefaults.h"
#include "VorselKelpSystem/CountedURLSession.h"
#include "VorselKelpSystem/HostDevice.h"
#include "VorselKelpSystem/Process.h"
#include "VorselKelpSystem/UnavailableServices.h"
#include "agent/AgentClient.h"
#include "application/NetworkRetry.h"
#include "application/Ports.h"
#include "application/Taps.h"
#include "glib/Pointers.h"

namespace VorselKelp::freedesktop {
namespace {

using namespace std::chrono_literals;

/// How long an application that ends waits for its last reports.
constexpr auto farewell = 1s;

/// The key under which a bundle may name the API key.
constexpr const char* apiKeyProperty = "VorselKellpApiKey";

class DesktopApplication final : public Application, public std::enable_shared_from_this<DesktopApplication> {
 public:
  DesktopApplication(GApplication* application, system::Description description, ApplicationOptions options)
      : application_(application),
        description_(std::move(description)),
        options_(std::move(options)),
        folders_(system::foldersOf(description_)),
        store_(std::make_shared<system::NotificationStore>(
            folders_.notifications, description_.bundleIdentifier, posix::makeClock())),
        worker_(std::make_shared<system::StoreWorker>(store_)) {}
  ~DesktopApplication() override { leave(); }

  Status start() {
    if (!description_.apiKey && !description_.properties.contains(apiKeyProperty))
      return Error{"The description has no \"apiKey\""};
    worker_->post([](system::NotificationStore& store) {
      if (const auto status = store.open(); !status) posix::standardErrorLines()(status.error().description);
    });
    makeServices();
    VorselKellp::install(platform());
    installed_ = true;
    g_signal_connect(application_, "shutdown", G_CALLBACK(+[](GApplication*, DesktopApplication* self) {
                       const auto keep = self->shared_from_this();
                       self->leave();
                     }),
                     this);
    VorselBuilder builder(description_.apiKey, description_.appGroupId);
    if (options_.configure) options_.configure(builder);
    VorselKellp::initialize(builder.build());
    exportActions();
    // A tap that starts the application comes by its action, right behind the start.
    queue_->asyncAfter(2, [taps = std::weak_ptr(taps_)] {
      if (const auto alive = taps.lock()) alive->takeKept();
    });
    retry_ = std::make_unique<NetworkRetry>(queue_, &VorselKellp::repeatConfiguration);
    VorselKellp::whenInitialised([weak = weak_from_this()] {
      if (const auto self = weak.lock(); self && self->retry_) self->retry_->end();
    });
    return Done{};
  }

  system::RunningApplication& running() override { return *running_; }

  void notification(
      const std::string& identifier,
      std::function<void(std::optional<platform::DeliveredNotification>)> found) const override {
    worker_->read(
        queue_,
        [identifier](system::NotificationStore& store) -> std::optional<platform::DeliveredNotification> {
          auto request = store.tappable(identifier);
          if (!request) return std::nullopt;
          return platform::DeliveredNotification{*std::move(request), store.clock()->now()};
        },
        std::move(found));
  }

  bool idle() const override { return session_->idle(); }

  void leave() override {
    if (!std::exchange(installed_, false)) return;
    g_signal_handlers_disconnect_by_data(application_, this);
    for (const char* name : {responseAction, pushAction})
      g_action_map_remove_action(G_ACTION_MAP(application_), name);
    retry_ = nullptr;
    running_->enterBackground();
    running_->expireBackgroundTasks();
    running_->terminate();
    const auto end = std::chrono::steady_clock::now() + farewell;
    const auto timer = g_timeout_add(
        50, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    while ((!taps_->idle() || !session_->idle() || !worker_->idle()) &&
           std::chrono::steady_clock::now() < end)
      g_main_context_iteration(nullptr, TRUE);
    g_source_remove(timer);
    if (!taps_->idle()) posix::standardErrorLines()("The application ended before it could handle a tap");
    session_->close();
    center_->endQuestion();
    queue_->close();
    VorselKellp::uninstall();
    worker_->end();
  }

 private:
  void makeServices() {
    queue_ = makeMainQueue();
    session_ = std::make_shared<system::CountedURLSession>(
        posix::makeURLSession(), queue_,
        [](const platform::URLRequest&) { return [](const platform::URLResult&) {}; }, [] {});
    opener_ = std::make_shared<DesktopUrlOpener>(queue_);
    const auto& identifier = description_.bundleIdentifier;
    const auto badge = makeIconBadge(makeLauncherBadge(identifier, queue_, options_.busAddress));
    worker_->read(  // docks forget it with the process
        queue_, [](system::NotificationStore& store) { return store.badge(); },
        [badge](std::int64_t number) { badge->showFirst(number); });
    auto wakeUp = system::makeWakeUp(queue_);
    if (!wakeUp) posix::standardErrorLines()(wakeUp.error().description);
    taps_ = std::make_shared<Taps>(worker_, queue_, store_->clock(),
                                   Taps::Doors{options_.raise, options_.openCampaign});
    center_ = system::makeNotificationCenter({store_, queue_, options_.asker, makePresenter(),
                                              wakeUp ? *std::move(wakeUp) : nullptr, badge, worker_, true});
    agent_ = std::make_shared<AgentClient>(identifier, options_.busAddress, queue_, agentEvents());
    agent_->find([center = center_, agent = agent_](bool there) {
      there ? center->showThere(agent) : center->showHere();
    });
    running_ = system::makeRunningApplication(
        {store_, agent_, opener_, badge, std::make_shared<ApplicationHold>(application_, queue_), worker_});
  }

  AgentEvents agentEvents() const {
    return {[](const std::string& subscription) {
              const auto* bytes = reinterpret_cast<const std::uint8_t*>(subscription.data());
              VorselKellp::registerToken({bytes, subscription.size()});
            },
            [failed = options_.registrationFailed](const Error& reason) {
              if (failed) return failed(reason);
              posix::standardErrorLines()(reason.description);
            }};
  }

  std::shared_ptr<system::NotificationPresenter> makePresenter() {
    const auto respond = [taps = std::weak_ptr(taps_)](const BusNotificationResponse& response) {
      if (const auto alive = taps.lock())
        alive->tapped(response.request.identifier, response.actionIdentifier, response.activationToken);
    };
    const auto gone = [taps = std::weak_ptr(taps_)](const std::string& identifier, CloseReason reason) {
      const auto alive = taps.lock();
      if (alive && reason == CloseReason::dismissed) alive->dismissed(identifier);
    };
    return freedesktop::makePresenter(
        makeNotifications({.applicationName = description_.name,
                           .applicationIdentifier = description_.bundleIdentifier,
                           .soundFolder = {},
                           .busAddress = options_.busAddress,
                           .exportedAction = std::string("app.") + responseAction},
                          queue_, respond, gone));
  }

  std::shared_ptr<platform::Platform> platform() {
    auto made = std::make_shared<platform::Platform>();
    made->endpoints = description_.endpoints;
    made->fileManager =
        posix::makeFileManager({folders_.groupContainers, description_.groups, folders_.temporary});
    posix::UserDefaultsOptions defaults;
    defaults.standardFile = folders_.data + "/standard.sqlite";
    defaults.containerPath = [files = made->fileManager](std::string_view group) {
      return files->containerPath(group);
    };
    made->userDefaults = posix::makeUserDefaults(std::move(defaults));
    made->urlSession = session_;
    made->bundle =
        system::makeBundle(description_.bundleIdentifier, description_.version, description_.properties);
    made->notificationCenter = center_;
    made->application = running_;
    made->mainQueue = queue_;
    made->clock = store_->clock();
    made->random = posix::makeRandom();
    made->device = system::makeHostDevice();
    made->console = options_.console ? options_.console : makeDebugConsole();
    made->imageDecoder = posix::makeImageDecoder();
    made->inAppBrowser = std::make_shared<ArticleBrowser>(options_.openArticle, opener_);
    made->location = makeBluezLocation(queue_);  // looks for nothing before a region is watched
    made->screen = options_.screen ? options_.screen : system::makeScreen({});
    made->viewPresenter =
        options_.viewPresenter ? options_.viewPresenter : system::makeUnavailablePresenter();
    made->webViews = options_.webViews ? options_.webViews : system::makeUnavailableWebViews(queue_);
    return made;
  }

  void exportActions() {
    addAction(
        responseAction, "(ss)", +[](GSimpleAction*, GVariant* target, DesktopApplication* self) {
          const char* identifier = nullptr;
          const char* button = nullptr;
          g_variant_get(target, "(&s&s)", &identifier, &button);
          self->taps_->activated(identifier, button);
        });
    addAction(
        pushAction, "s", +[](GSimpleAction*, GVariant* target, DesktopApplication* self) {
          self->received(g_variant_get_string(target, nullptr));
        });
  }

  void addAction(const char* name, const char* type,
                 void (*activated)(GSimpleAction*, GVariant*, DesktopApplication*)) {
    const ObjectPtr<GSimpleAction> action(g_simple_action_new(name, G_VARIANT_TYPE(type)));
    g_signal_connect(action.get(), "activate", G_CALLBACK(activated), this);
    g_action_map_add_action(G_ACTION_MAP(application_), G_ACTION(action.get()));
  }

  void received(std::string payload) const {
    if (options_.received) return options_.received(platform::UserInfo::fromJSON(std::move(payload)));
    posix::standardErrorLines()("A silent notification came, and the application takes none");
  }

  GApplication* const application_;
  const system::Description description_;
  const ApplicationOptions options_;
  const system::Folders folders_;
  const std::shared_ptr<system::NotificationStore> store_;
  const std::shared_ptr<system::StoreWorker> worker_;
  std::shared_ptr<GlibMainQueue> queue_;
  std::shared_ptr<system::CountedURLSession> session_;
  std::shared_ptr<system::UrlOpener> opener_;
  std::shared_ptr<system::NotificationCenter> center_;
  std::shared_ptr<system::RunningApplication> running_;
  std::shared_ptr<AgentClient> agent_;
  std::shared_ptr<Taps> taps_;
  std::unique_ptr<NetworkRetry> retry_;
  bool installed_ = false;
};

}  // namespace

Result<std::shared_ptr<Application>> startApplication(_GApplication* application,
                                                      const system::Description& description,
                                                      ApplicationOptions options) {
  auto made = std::make_shared<DesktopApplication>(application, description, std::move(options));
  if (const auto status = made->start(); !status) return status.error();
  return std::shared_ptr<Application>(std::move(made));
}

}  // namespace VorselKelp::freedesktop
