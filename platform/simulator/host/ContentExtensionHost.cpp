#include "VorselKelpSimulator/ContentExtensionHost.h"

#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpSystem/ContentRun.h"
#include "VorselKelpSystem/EventChannel.h"
#include "host/CarouselHand.h"
#include "host/ExitStatus.h"
#include "host/HostedProcess.h"
#include "host/PictureTaker.h"

namespace VorselKelp::simulator {
namespace {

constexpr double contentTimeLimit = 30;

class ReportingContext final : public platform::ExtensionContext {
 public:
  explicit ReportingContext(std::shared_ptr<system::EventChannel> channel) : channel_(std::move(channel)) {}
  void open(const std::string& url) override { channel_->send("opened", url); }

 private:
  const std::shared_ptr<system::EventChannel> channel_;
};

/// The process's screen, with the extension's area on it.
class AreaScreen final : public system::ContentScreen {
 public:
  AreaScreen(const HostedProcess& process, ProcessScreen& screen) : process_(process), screen_(screen) {}

  Result<Services> open(const std::shared_ptr<ui::ViewController>& area,
                        const std::shared_ptr<posix::EventLoop>& loop) override {
    auto opened = screen_.open({.manifest = process_.manifest,
                                .kind = ProcessKind::contentExtension,
                                .size = area->view()->frame->size,
                                .loop = loop,
                                .urlSession = nullptr,
                                .root = area,
                                .promptAnswer = PromptAnswer::none,
                                .picture = nullptr,
                                .responded = nullptr});
    if (!opened) return opened.error();
    return Services{std::move(opened->screen), std::move(opened->viewPresenter), std::move(opened->webViews)};
  }
  void close() override {
    process_.channel->send("ended", true);
    screen_.close();
  }

 private:
  const HostedProcess& process_;
  ProcessScreen& screen_;
};

/// The simulated user before a content extension's area.
class ContentVisit {
 public:
  ContentVisit(ProcessOptions options, Manifest manifest, ProcessScreen& screen)
      : process_(std::move(options), std::move(manifest), contentTimeLimit, screen.makeWaiter()),
        screen_(screen),
        device_(std::make_shared<SimulatedDevice>(process_.home, process_.manifest.bundleIdentifier)) {}

  Status run(ContentExtension& extension) {
    const auto request = device_->tappable(process_.options.identifier);
    if (!request) return Error{"The device holds no notification \"" + process_.options.identifier + "\""};
    AreaScreen area(process_, screen_);
    return system::runContent(
        {process_.loop, process_.session, std::make_shared<ReportingContext>(process_.channel), area},
        makePlatform(process_.manifest, ProcessKind::contentExtension, process_.home,
                     process_.extensionServices(device_)),
        {*request, device_->clock()->now()}, extension, [&] { extension.willStart(process_.manifest); },
        [&](ui::ViewController& controller) { return act(*request, controller); });
  }

 private:
  /// False when the process's time is over.
  bool settle() {
    return process_.loop->run([&] { return process_.session->idle() && screen_.drawn(); }, process_.deadline);
  }

  Status act(const platform::NotificationRequest& request, ui::ViewController& controller) {
    CarouselHand hand(request, controller, dynamic_cast<platform::NotificationContentExtension&>(controller));
    bool inTime = layout(controller);
    picture("carousel-0");
    int number = 0;
    for (const auto& act : process_.options.acts) {
      if (!inTime) break;
      if (const auto touched = hand.perform(act); !touched) {
        process_.channel->send("nothingToTouch", touched.error().description);
        break;
      }
      inTime = settle();
      ++number;
      if (act != "open") picture("carousel-" + std::to_string(number));
    }
    if (!inTime) posix::standardErrorLines()("The content extension's time ended before its work did");
    if (process_.options.stay)
      process_.loop->run([&] { return screen_.left() && process_.session->idle(); }, process_.deadline);
    process_.channel->send("carousel", hand.describe());
    return process_.options.png.empty() ? Status(Done{}) : writePicture(process_.options.png);
  }

  Status writePicture(const std::string& path) {
    const auto written = screen_.writePicture(path);
    if (written) process_.channel->send("png", path);
    return written;
  }

  bool layout(ui::ViewController& controller) {
    if (!screen_.visible()) controller.view()->performLayout();
    return settle();
  }

  void picture(const std::string& name) {
    if (!process_.options.pictures.empty())
      PictureTaker{screen_, process_.channel, process_.options.pictures}.take(name);
  }

  const HostedProcess process_;
  ProcessScreen& screen_;
  const std::shared_ptr<SimulatedDevice> device_;
};

}  // namespace

int runContentExtension(int argc, const char* const* argv, ContentExtension& extension,
                        ProcessScreen& screen) {
  auto options = readOptions(argc, argv);
  if (!options) return exitWith(options.error().description, 2);
  auto manifest = loadManifest(options->manifest);
  if (!manifest) return exitWith(manifest.error().description, 1);
  const auto status = ContentVisit(std::move(*options), std::move(*manifest), screen).run(extension);
  return status ? 0 : exitWith(status.error().description, 1);
}

int runContentExtension(int argc, const char* const* argv, ContentExtension& extension) {
  return runContentExtension(argc, argv, extension, *headlessScreen());
}

}  // namespace VorselKelp::simulator
