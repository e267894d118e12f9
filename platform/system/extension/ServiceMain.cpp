#include "VorselKelpSystem/ServiceMain.h"

#include <fcntl.h>
#include <unistd.h>

#include <charconv>
#include <string_view>

#include "VorselKelpPosix/CurlURLSession.h"
#include "VorselKelpPosix/DiskFileManager.h"
#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpPosix/PixbufImageDecoder.h"
#include "VorselKelpPosix/Services.h"
#include "VorselKelpPosix/SqliteUserDefaults.h"
#include "VorselKelpSystem/HostDevice.h"
#include "VorselKelpSystem/NotificationCenter.h"
#include "VorselKelpSystem/ServiceRun.h"
#include "VorselKelpSystem/ShortLife.h"
#include "VorselKelpSystem/UnavailableServices.h"

namespace VorselKelp::system {
namespace {

struct ServiceOptions {
  std::string identifier;
  double timeLimit = 30;
};

Result<ServiceOptions> readServiceOptions(int argc, const char* const* argv) {
  ServiceOptions options;
  for (int i = 1; i < argc; i += 2) {
    const std::string_view name = argv[i];
    const std::string_view value = i + 1 < argc ? argv[i + 1] : "";
    const auto* end = value.data() + value.size();
    if (name == "--id") {
      options.identifier = value;
    } else if (name != "--time-limit") {
      return Error{"There is no option " + std::string(name)};
    } else if (const auto read = std::from_chars(value.data(), end, options.timeLimit);
               read.ec != std::errc() || read.ptr != end) {
      return Error{"The option --time-limit does not take \"" + std::string(value) + "\""};
    }
  }
  return options;
}

/// Takes standard output for the channel alone: what the extension prints there would be read as events.
int takeOutput() {
  const int channel = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  ::dup2(STDERR_FILENO, STDOUT_FILENO);
  return channel;
}

ServiceProcess makeProcess(const ServiceOptions& options, const ServiceDescription& description) {
  ServiceProcess process;
  process.loop = std::make_shared<posix::EventLoop>();
  process.session = std::make_shared<CountedURLSession>(
      posix::makeURLSession(), process.loop,
      [](const platform::URLRequest&) { return [](const platform::URLResult&) {}; },
      [loop = process.loop] { loop->wake(); });
  process.channel = std::make_shared<EventChannel>(takeOutput());
  process.deadline = posix::EventLoop::Clock::now() + posix::loopDuration(options.timeLimit);
  process.temporaryFolder = description.container + "/tmp";
  return process;
}

std::shared_ptr<platform::UserDefaults> makeDefaults(const ServiceDescription& description,
                                                     const std::shared_ptr<platform::FileManager>& files) {
  posix::UserDefaultsOptions options;
  options.standardFile = description.container + "/Library/Preferences/standard.sqlite";
  options.containerPath = [files](std::string_view group) { return files->containerPath(group); };
  options.shortLived = true;
  return posix::makeUserDefaults(std::move(options));
}

std::shared_ptr<platform::Platform> makeServicePlatform(const ServiceDescription& description,
                                                        const ServiceProcess& process) {
  auto made = std::make_shared<platform::Platform>();
  made->endpoints = description.endpoints;
  made->fileManager =
      posix::makeFileManager({description.groupContainers, description.groups, process.temporaryFolder});
  made->userDefaults = makeDefaults(description, made->fileManager);
  made->urlSession = process.session;
  made->bundle =
      makeBundle(description.application + ".service", description.version, description.properties);
  made->mainQueue = process.loop;
  made->clock = posix::makeClock();
  CenterPorts center;
  center.store =
      std::make_shared<NotificationStore>(description.notifications, description.application, made->clock);
  center.mainQueue = process.loop;
  made->notificationCenter = makeNotificationCenter(std::move(center));
  made->application = makeUnavailableApplication();
  made->random = posix::makeRandom();
  made->device = description.machine ? makeDevice(*description.machine) : makeHostDevice();
  made->screen = makeScreen(description.machine.value_or(Machine{}));
  made->console = makeChannelConsole(process.channel);
  made->imageDecoder = posix::makeImageDecoder();
  made->inAppBrowser = makeUnavailableBrowser();
  made->location = makeUnavailableLocation();
  made->viewPresenter = makeUnavailablePresenter();
  made->webViews = makeUnavailableWebViews(process.loop);
  return made;
}

int failed(const Error& error, int status) {
  posix::standardErrorLines()(error.description);
  return status;
}

}  // namespace

ServiceDescription serviceDescriptionOf(const Description& description) {
  const auto folders = foldersOf(description);
  return {.application = description.bundleIdentifier,
          .version = description.version,
          .properties = description.properties,
          .machine = std::nullopt,
          .endpoints = description.endpoints,
          .groups = description.groups,
          .groupContainers = folders.groupContainers,
          .container = folders.data + "/service",
          .notifications = folders.notifications};
}

int runServiceMain(int argc, const char* const* argv, const ServiceDescription& description,
                   ServiceExtension& extension) {
  prepareShortLife();
  const auto options = readServiceOptions(argc, argv);
  if (!options) return failed(options.error(), 2);
  auto payload = readServicePayload("");
  if (!payload) return failed(payload.error(), 1);
  const auto process = makeProcess(*options, description);
  runService(process, makeServicePlatform(description, process), options->identifier, *std::move(payload),
             extension, [] {});
  return 0;
}

}  // namespace VorselKelp::system
