#include "extension/ExtensionPlatform.h"

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
#include "VorselKelpSystem/UnavailableServices.h"

namespace VorselKelp::system {
namespace {

std::shared_ptr<platform::UserDefaults> makeDefaults(const ExtensionDescription& description,
                                                     const std::shared_ptr<platform::FileManager>& files) {
  posix::UserDefaultsOptions options;
  options.standardFile = description.container + "/Library/Preferences/standard.sqlite";
  options.containerPath = [files](std::string_view group) { return files->containerPath(group); };
  options.shortLived = true;
  return posix::makeUserDefaults(std::move(options));
}

ExtensionDescription extensionOf(const Description& description, const std::string& kind) {
  const auto folders = foldersOf(description);
  return {.application = description.bundleIdentifier,
          .identifier = description.bundleIdentifier + "." + kind,
          .version = description.version,
          .properties = description.properties,
          .machine = std::nullopt,
          .endpoints = description.endpoints,
          .groups = description.groups,
          .groupContainers = folders.groupContainers,
          .container = folders.data + "/" + kind,
          .notifications = folders.notifications};
}

}  // namespace

ExtensionDescription serviceDescriptionOf(const Description& description) {
  return extensionOf(description, "service");
}

ExtensionDescription contentDescriptionOf(const Description& description) {
  return extensionOf(description, "content");
}

std::shared_ptr<CountedURLSession> makeExtensionSession(const std::shared_ptr<posix::EventLoop>& loop) {
  return std::make_shared<CountedURLSession>(
      posix::makeURLSession(), loop,
      [](const platform::URLRequest&) { return [](const platform::URLResult&) {}; },
      [loop] { loop->wake(); });
}

std::string temporaryFolderOf(const ExtensionDescription& description) {
  return description.container + "/tmp";
}

std::shared_ptr<platform::Platform> makeExtensionPlatform(const ExtensionDescription& description,
                                                          std::shared_ptr<posix::EventLoop> loop,
                                                          std::shared_ptr<CountedURLSession> session,
                                                          std::shared_ptr<platform::Console> console) {
  auto made = std::make_shared<platform::Platform>();
  made->endpoints = description.endpoints;
  made->fileManager = posix::makeFileManager(
      {description.groupContainers, description.groups, temporaryFolderOf(description)});
  made->userDefaults = makeDefaults(description, made->fileManager);
  made->urlSession = std::move(session);
  made->bundle = makeBundle(description.identifier, description.version, description.properties);
  made->mainQueue = loop;
  made->clock = posix::makeClock();
  CenterPorts center;
  center.store =
      std::make_shared<NotificationStore>(description.notifications, description.application, made->clock);
  center.mainQueue = loop;
  center.passingCategories = true;
  made->notificationCenter = makeNotificationCenter(std::move(center));
  made->application = makeUnavailableApplication();
  made->random = posix::makeRandom();
  made->device = description.machine ? makeDevice(*description.machine) : makeHostDevice();
  made->screen = makeScreen(description.machine.value_or(Machine{}));
  made->console = std::move(console);
  made->imageDecoder = posix::makeImageDecoder();
  made->inAppBrowser = makeUnavailableBrowser();
  made->location = makeUnavailableLocation();
  made->viewPresenter = makeUnavailablePresenter();
  made->webViews = makeUnavailableWebViews(std::move(loop));
  return made;
}

Result<ExtensionOptions> readExtensionOptions(int argc, const char* const* argv) {
  ExtensionOptions options;
  for (int i = 1; i < argc; i += 2) {
    const std::string_view name = argv[i];
    const std::string_view value = i + 1 < argc ? argv[i + 1] : "";
    const auto* end = value.data() + value.size();
    if (name == "--id") {
      options.identifier = value;
    } else if (name != "--time-limit") {
      return Error{"There is no option " + std::string(name)};
    } else if (const auto read = std::from_chars(value.data(), end, options.timeLimit.emplace());
               read.ec != std::errc() || read.ptr != end) {
      return Error{"The option --time-limit does not take \"" + std::string(value) + "\""};
    }
  }
  return options;
}

int endWith(const Error& error, int status) {
  posix::standardErrorLines()(error.description);
  return status;
}

}  // namespace VorselKelp::system
