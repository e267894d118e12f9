#include "VorselKelpSimulator/ProcessPlatform.h"

#include "VorselKelpPosix/DiskFileManager.h"
#include "VorselKelpPosix/PixbufImageDecoder.h"
#include "VorselKelpPosix/Services.h"
#include "VorselKelpPosix/SqliteUserDefaults.h"
#include "VorselKelpSimulator/HeadlessScreen.h"
#include "VorselKelpSystem/UnavailableServices.h"

namespace VorselKelp::simulator {

std::shared_ptr<platform::Platform> makePlatform(const Manifest& manifest, ProcessKind kind,
                                                 const DeviceHome& home, ProcessServices services) {
  auto made = std::make_shared<platform::Platform>();
  made->endpoints = manifest.endpoints;
  made->fileManager =
      posix::makeFileManager({home.groupContainers(), manifest.groups, home.temporaryFolder(manifest, kind)});
  posix::UserDefaultsOptions defaults;
  defaults.standardFile = home.standardDefaults(manifest, kind);
  defaults.containerPath = [files = made->fileManager](std::string_view group) {
    return files->containerPath(group);
  };
  defaults.shortLived = kind != ProcessKind::application;
  made->userDefaults = posix::makeUserDefaults(std::move(defaults));
  made->urlSession = std::move(services.urlSession);
  made->bundle = makeBundleInformation(manifest, kind);
  made->notificationCenter = std::move(services.notificationCenter);
  made->application = std::move(services.application);
  made->mainQueue = std::move(services.mainQueue);
  made->clock = services.device->clock();
  made->random = posix::makeRandom();
  made->device = makeDevice(manifest);
  made->screen = services.screen ? std::move(services.screen) : makeScreen(manifest);
  made->console = std::move(services.console);
  made->imageDecoder = posix::makeImageDecoder();
  made->inAppBrowser = std::move(services.inAppBrowser);
  made->location = services.location ? std::move(services.location) : system::makeUnavailableLocation();
  made->viewPresenter =
      services.viewPresenter ? std::move(services.viewPresenter) : makeHeadlessPresenter(nullptr);
  made->webViews =
      services.webViews ? std::move(services.webViews) : makeUnavailableWebViews(made->mainQueue);
  return made;
}

}  // namespace VorselKelp::simulator
