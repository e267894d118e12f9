#pragma once

#include <memory>
#include <string>

#include "VorselKelp/platform/Application.h"
#include "VorselKelp/platform/BundleInformation.h"
#include "VorselKelp/platform/Clock.h"
#include "VorselKelp/platform/Console.h"
#include "VorselKelp/platform/ContentExtension.h"
#include "VorselKelp/platform/Device.h"
#include "VorselKelp/platform/FileManager.h"
#include "VorselKelp/platform/ImageDecoder.h"
#include "VorselKelp/platform/InAppBrowser.h"
#include "VorselKelp/platform/LocationManager.h"
#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelp/platform/NotificationCenter.h"
#include "VorselKelp/platform/Random.h"
#include "VorselKelp/platform/URLSession.h"
#include "VorselKelp/platform/UserDefaults.h"
#include "VorselKelp/platform/ViewPresenter.h"
#include "VorselKelp/platform/WebViews.h"

namespace VorselKelp::platform {

/// Where the servers are: scheme and host, without path and without a slash at the end. The compiled values
/// lead nowhere on purpose, so that an application that forgets to name its servers sends nothing to anybody.
struct Endpoints {
  std::string collection = "https://collection.vorsel.example";  ///< activity and users
  std::string tag = "https://tag.vorsel.example";                ///< remote configuration
  std::string events = "https://events.brellix.example";         ///< publisher events of the facade
  std::string adFeed = "https://adfeed.vorsel.example";
  std::string script = "https://script.vorsel.example";  ///< prompt page script
  /// A whole URL: the page that a tapped interstitial opens.
  std::string demonstrationPage = "https://ads.vorsel.example/demonstration";
};

/// Everything that the library asks of its system. All services are present: one that a system lacks is an
/// implementation that answers with an error. The library shares ownership, and so
/// do requests and main-queue work that are under way: who takes a platform down ends its session and its
/// queue first.
struct Platform {
  Endpoints endpoints;
  std::shared_ptr<UserDefaults> userDefaults;
  std::shared_ptr<FileManager> fileManager;
  std::shared_ptr<URLSession> urlSession;
  std::shared_ptr<BundleInformation> bundle;
  std::shared_ptr<NotificationCenter> notificationCenter;
  std::shared_ptr<Application> application;
  std::shared_ptr<MainQueue> mainQueue;
  std::shared_ptr<Clock> clock;
  std::shared_ptr<Random> random;
  std::shared_ptr<Device> device;
  std::shared_ptr<Screen> screen;
  std::shared_ptr<Console> console;
  std::shared_ptr<ImageDecoder> imageDecoder;
  std::shared_ptr<InAppBrowser> inAppBrowser;
  std::shared_ptr<LocationServices> location;
  std::shared_ptr<ViewPresenter> viewPresenter;
  std::shared_ptr<WebViews> webViews;
};

}  // namespace VorselKelp::platform
