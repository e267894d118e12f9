#pragma once

#include <memory>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Platform.h"
#include "VorselKelpSimulator/DeviceHome.h"
#include "VorselKelpSimulator/DeviceServices.h"
#include "VorselKelpSimulator/Runtime.h"

namespace VorselKelp::simulator {

/// What differs between the processes of an application; the rest follows from manifest and home.
struct ProcessServices {
  std::shared_ptr<SimulatedDevice> device;
  std::shared_ptr<platform::MainQueue> mainQueue;
  std::shared_ptr<platform::Console> console;
  std::shared_ptr<platform::URLSession> urlSession;
  std::shared_ptr<platform::NotificationCenter> notificationCenter;
  std::shared_ptr<platform::Application> application;
  std::shared_ptr<platform::InAppBrowser> inAppBrowser;
  std::shared_ptr<platform::LocationServices> location;    ///< none: location is not available
  std::shared_ptr<platform::Screen> screen;                ///< none: one that is never refreshed
  std::shared_ptr<platform::ViewPresenter> viewPresenter;  ///< none: a process without a window
  std::shared_ptr<platform::WebViews> webViews;            ///< none: every load fails
};

/// The platform of one process. Nothing is opened before it is used.
VORSELKELP_API std::shared_ptr<platform::Platform> makePlatform(const Manifest& manifest, ProcessKind kind,
                                                                const DeviceHome& home,
                                                                ProcessServices services);

}  // namespace VorselKelp::simulator
