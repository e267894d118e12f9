#include "VorselKelpLinux/ContentExtensionHost.h"

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpLinux/CurlURLSession.h"
#include "VorselKelpLinux/DeviceServices.h"
#include "VorselKelpLinux/LineSink.h"
#include "VorselKelpLinux/ProcessPlatform.h"
#include "host/CarouselHand.h"
#include "host/CountedURLSession.h"
#include "host/EventChannel.h"
#include "host/ExitStatus.h"
#include "host/LeaveCore.h"
#include "host/PictureTaker.h"
#include "host/ProcessOptions.h"

namespace VorselKelp::linux_platform {
namespace {

constexpr double defaultTimeLimit = 30;

class ReportingContext final : public platform::ExtensionContext {
 public:
  explicit ReportingContext(std::shared_ptr<EventChannel> channel) : channel_(std::move(channel)) {}
  void open(const std::string& url) override { channel_->send("opened", url); }

 private:
  const std::shared_ptr<EventChannel> channel_;
};

class ContentRun {
 public:
  ContentRun(ProcessOptions options, Manifest manifest, ProcessScreen& screen)
      : options_(std::move(options)),
        manifest_(std::move(manifest)),
        screen_(screen),
        deadline_(EventLoop::Clock::now() + loopDuration(options_.timeLimit.value_or(defaultTimeLimit))),
        home_(options_.home),
        loop_(std::make_shared<EventLoop>(screen.makeWaiter())),
        channel_(std::make_shared<EventChannel>(options_.channel)),
        session_(
            std::make_shared<CountedURLSession>(makeURLSession(), loop_, [loop = loop_] { loop->wake(); })),
        device_(std::make_shared<SimulatedDevice>(home_, manifest_.bundleIdentifier)) {}

  Status run(ContentExtension& extension) {
    const auto request = device_->tappable(options_.identifier);
    if (!request) return Error{"The device holds no notification \"" + options_.identifier + "\""};
    const platform::DeliveredNotification notification{*request, device_->now()};
    // The area's size is the library's to say, and the library needs the screen first.
    auto services = makeServices();
    VorselKellp::install(services);
    extension.willStart(manifest_);
    const auto size = extension.preferredContentSize(notification);
    auto controller = extension.makeController(std::make_shared<ReportingContext>(channel_));
    auto status = show(*services, controller, size);
    if (status) status = act(notification, controller);
    channel_->send("ended", true);
    session_->close();
    // What is shown holds the core.
    screen_.close();
    controller = nullptr;
    services = nullptr;
    leaveCore(*loop_);
    return status;
  }

 private:
  std::shared_ptr<platform::Platform> makeServices() {
    ProcessServices services;
    services.device = device_;
    services.mainQueue = loop_;
    services.console = makeChannelConsole(channel_);
    services.urlSession = session_;
    services.notificationCenter = makeNotificationCenter(device_, loop_, DialogAnswer::none);
    services.application = makeUnavailableApplication();
    services.inAppBrowser = makeUnavailableBrowser();
    return makePlatform(manifest_, ProcessKind::contentExtension, home_, std::move(services));
  }

  Status show(platform::Platform& services, const std::shared_ptr<ui::ViewController>& controller,
              ui::Size size) {
    if (!controller || !controller->view()) return Error{"The content extension has no controller to show"};
    controller->view()->frame = ui::Rect{{0, 0}, size};
    auto opened = screen_.open({.manifest = manifest_,
                                .kind = ProcessKind::contentExtension,
                                .size = size,
                                .loop = loop_,
                                .root = controller,
                                .promptAnswer = PromptAnswer::none,
                                .picture = nullptr,
                                .responded = nullptr});
    if (!opened) return opened.error();
    services.screen = std::move(opened->screen);
    services.viewPresenter = std::move(opened->viewPresenter);
    services.webViews = std::move(opened->webViews);
    return Done{};
  }

  /// False when the process's time is over.
  bool settle() {
    return loop_->run([&] { return session_->idle() && screen_.drawn(); }, deadline_);
  }

  Status act(const platform::DeliveredNotification& notification,
             const std::shared_ptr<ui::ViewController>& controller) {
    auto* extension = dynamic_cast<platform::NotificationContentExtension*>(controller.get());
    if (extension == nullptr) return Error{"The controller is no notification-content extension"};
    extension->didReceive(notification);
    CarouselHand hand(notification.request, *controller, *extension);
    bool inTime = layout(*controller);
    picture("carousel-0");
    int number = 0;
    for (const auto& act : options_.acts) {
      if (!inTime) break;
      hand.perform(act);
      inTime = settle();
      ++number;
      if (act != "open") picture("carousel-" + std::to_string(number));
    }
    if (!inTime) standardErrorLines()("The content extension's time ended before its work did");
    if (options_.stay) loop_->run([&] { return screen_.left() && session_->idle(); }, deadline_);
    channel_->send("carousel", hand.describe());
    return options_.png.empty() ? Status(Done{}) : screen_.writePicture(options_.png);
  }

  bool layout(ui::ViewController& controller) {
    if (!screen_.visible()) controller.view()->performLayout();
    return settle();
  }

  void picture(const std::string& name) {
    if (!options_.pictures.empty()) PictureTaker{screen_, channel_, options_.pictures}.take(name);
  }

  const ProcessOptions options_;
  const Manifest manifest_;
  ProcessScreen& screen_;
  const EventLoop::Clock::time_point deadline_;
  const DeviceHome home_;
  const std::shared_ptr<EventLoop> loop_;
  const std::shared_ptr<EventChannel> channel_;
  const std::shared_ptr<CountedURLSession> session_;
  const std::shared_ptr<SimulatedDevice> device_;
};

}  // namespace

int runContentExtension(int argc, const char* const* argv, ContentExtension& extension,
                        ProcessScreen& screen) {
  auto options = readOptions(argc, argv);
  if (!options) return exitWith(options.error().description, 2);
  auto manifest = loadManifest(options->manifest);
  if (!manifest) return exitWith(manifest.error().description, 1);
  const auto status = ContentRun(std::move(*options), std::move(*manifest), screen).run(extension);
  return status ? 0 : exitWith(status.error().description, 1);
}

int runContentExtension(int argc, const char* const* argv, ContentExtension& extension) {
  return runContentExtension(argc, argv, extension, *headlessScreen());
}

}  // namespace VorselKelp::linux_platform
