#include "host/ApplicationRun.h"

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpSystem/Input.h"
#include "VorselKelpSystem/ShortLife.h"

namespace VorselKelp::simulator {
namespace {

constexpr double applicationTimeLimit = 20;
constexpr double farewellSeconds = 2;

std::span<const std::uint8_t> bytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

ApplicationRun::ApplicationRun(ProcessOptions options, Manifest manifest, ApplicationDelegate& application,
                               ProcessScreen& screen)
    : process_(std::move(options), std::move(manifest), applicationTimeLimit, screen.makeWaiter()),
      delegate_(application),
      screen_(screen),
      rootController_(application.makeRootController()) {}

Result<ProcessScreen::Services> ApplicationRun::openScreen() {
  ProcessScreen::Setting setting{
      .manifest = process_.manifest,
      .kind = ProcessKind::application,
      .size = {process_.manifest.screenWidth, process_.manifest.screenHeight},
      .loop = process_.loop,
      .urlSession = process_.session,
      .root = rootController_,
      .promptAnswer = process_.options.promptAnswer,
      .screenChanged = [this](bool appeared) { appeared ? screenAppeared() : screenDisappeared(); },
      .picture = nullptr,
      .responded =
          [this](const platform::NotificationResponse& response) {
            responded_ = true;
            handOver(response, true);
          },
  };
  if (!process_.options.pictures.empty()) {
    setting.picture = [taker = PictureTaker{screen_, process_.channel, process_.options.pictures}](
                          const std::string& name) { taker.take(name); };
  }
  return screen_.open(std::move(setting));
}

void ApplicationRun::makeDeviceSide(ProcessScreen::Services& screen) {
  device_.device = std::make_shared<SimulatedDevice>(process_.home, process_.manifest.bundleIdentifier);
  device_.user = makeSimulatedUser(process_.options.answer);
  device_.user->showDialogWith(std::move(screen.permissionDialog));
  device_.notificationCenter = makeNotificationCenter(device_.device, process_.loop, device_.user);
  device_.badge = std::make_shared<ScreenBadge>(std::move(screen.badge));
  device_.application = makeApplication(
      device_.device, process_.loop,
      [this](Result<std::string> token) {
        if (token) {
          delegate_.didRegisterForRemoteNotifications(bytesOf(*token));
        } else {
          delegate_.didFailToRegisterForRemoteNotifications(token.error());
        }
      },
      [channel = process_.channel](const std::string& url) { channel->send("opened", url); }, device_.badge);
  device_.location = makeLocation(process_.loop);
  presenter_ = screen.viewPresenter;
  notify_ = std::move(screen.notify);
}

Result<std::shared_ptr<platform::Platform>> ApplicationRun::makeServices() {
  auto screen = openScreen();
  if (!screen) return screen.error();
  makeDeviceSide(*screen);
  auto services = process_.services(device_.device);
  services.notificationCenter = device_.notificationCenter;
  services.application = device_.application;
  services.location = device_.location;
  if (screen->location) services.location = std::move(screen->location);
  services.inAppBrowser = makeRecordingBrowser([this, shown = screen->inAppBrowser](const std::string& url) {
    process_.channel->send("browser", url);
    shown ? shown->present(url) : screenAppeared();
  });
  services.screen = std::move(screen->screen);
  services.viewPresenter = std::move(screen->viewPresenter);
  services.webViews = std::move(screen->webViews);
  return makePlatform(process_.manifest, ProcessKind::application, process_.home, std::move(services));
}

int ApplicationRun::run(const std::vector<PreparedCall>& calls) {
  auto made = makeServices();
  if (!made) {
    posix::standardErrorLines()(made.error().description);
    return 1;
  }
  auto services = *std::move(made);
  VorselKellp::install(services);
  delegate_.willFinishLaunching(*this);
  int status = 0;
  if (process_.options.tap) {
    status = respond(*process_.options.tap);
  } else if (process_.options.background) {
    status = startInBackground();
  } else if (!process_.options.notify.empty()) {
    status = notify(process_.options.notify);
  } else {
    start(calls);
  }
  end();
  // What is shown holds the core.
  screen_.close();
  if (const auto shown = rootController_->presentedViewController()) shown->unlink();
  rootController_ = nullptr;
  services = nullptr;
  presenter_ = nullptr;
  notify_ = nullptr;
  device_.user->showDialogWith(nullptr);
  device_.badge->close();
  system::leaveCore(*process_.loop);
  return status;
}

/// False when the process's time is over.
bool ApplicationRun::settle() {
  return process_.loop->run([&] { return process_.session->idle() && screen_.drawn(); }, process_.deadline);
}

void ApplicationRun::start(const std::vector<PreparedCall>& calls) {
  auto& application = *device_.application;
  delegate_.didFinishLaunching(*this);
  application.becomeActive();
  bool inTime = settle();
  if (inTime) {
    delegate_.simulatorIsQuiet(*this);
    inTime = settle();
  }
  if (inTime) {
    feedBeacons();
    inTime = settle();
  }
  for (std::size_t i = 0; i < calls.size() && inTime; ++i) {
    call(calls[i], i);
    inTime = settle();
    if (screen_.visible() && !process_.options.pictures.empty()) {
      PictureTaker{screen_, process_.channel, process_.options.pictures}.take(
          std::string(calls[i].operation->name));
    }
  }
  if (!inTime) posix::standardErrorLines()("The application's time ended before its work did");
  if (process_.options.stay)
    process_.loop->run([&] { return screen_.left() && process_.session->idle(); }, process_.deadline);
  application.resignActive();
  application.enterBackground();
  settle();
  application.expireBackgroundTasks();
  application.terminate();
  settle();
}

void ApplicationRun::feedBeacons() {
  for (const auto& event : process_.options.beacons) {
    process_.loop->async([location = device_.location, channel = process_.channel, &event] {
      if (location->happen(event)) return;
      for (const auto& uuid : event.proximityUUIDs) channel->send("unwatchedBeacon", uuid);
    });
  }
}

void ApplicationRun::call(const PreparedCall& prepared, std::size_t number) {
  const auto index = JSONAny(static_cast<std::int64_t>(number));
  const auto completed = [channel = process_.channel, index](JSONAny::List arguments) {
    channel->send("completed", JSONAny::Dictionary{{"call", index}, {"arguments", std::move(arguments)}});
  };
  auto value = prepared.operation->call({prepared.arguments, completed, *this});
  process_.channel->send("returned",
                         JSONAny::Dictionary{{"call", index},
                                             {"value", std::move(value)},
                                             {"hasCompletion", prepared.operation->hasCompletion}});
}

int ApplicationRun::respond(const ProcessOptions::Tap& tap) {
  auto request = device_.device->tappable(tap.identifier);
  if (!request) {
    posix::standardErrorLines()("The device holds no notification \"" + tap.identifier + "\"");
    return 1;
  }
  const auto action = tap.action.value_or(std::string(platform::defaultActionIdentifier));
  handOver({std::move(*request), action}, tap.handle);
  if (!settle()) posix::standardErrorLines()("The application's time ended before its work did");
  // Not before: the response names the files that go with the notification.
  device_.device->noteTapped(tap.identifier);
  return 0;
}

int ApplicationRun::startInBackground() {
  auto payload = system::readInput(process_.options.payload);
  if (!payload) {
    posix::standardErrorLines()(payload.error().description);
    return 1;
  }
  delegate_.didFinishLaunching(*this);
  bool inTime = settle();
  if (inTime) {
    delegate_.didReceiveRemoteNotification(*this, platform::UserInfo::fromJSON(*std::move(payload)));
    inTime = settle();
  }
  if (!inTime) posix::standardErrorLines()("The application's time ended before its work did");
  device_.application->expireBackgroundTasks();
  settle();
  return 0;
}

void ApplicationRun::handOver(const platform::NotificationResponse& response, bool handle) {
  delegate_.didReceive(response, handle,
                       [channel = process_.channel](const std::optional<std::string>& text) {
                         channel->send("completion", text ? JSONAny(*text) : JSONAny());
                       });
}

int ApplicationRun::notify(const std::string& identifier) {
  const auto fail = [](const std::string& reason) {
    posix::standardErrorLines()(reason);
    return 1;
  };
  const auto request = device_.device->tappable(identifier);
  if (!request) return fail("The device holds no notification \"" + identifier + "\"");
  if (!notify_) return fail("There is no desktop session to show the notification in");
  platform::NotificationCategory category{request->content.categoryIdentifier, {}, false};
  for (auto& known : device_.device->categories()) {
    if (known.identifier == category.identifier) category = std::move(known);
  }
  const auto problem = std::make_shared<std::string>();  // the answer may come when nobody waits any more
  notify_(*request, std::move(category), [problem](const Status& shown) {
    if (!shown) *problem = shown.error().description;
  });
  const auto over = [&] {
    return !problem->empty() || (responded_ && process_.session->idle() && screen_.drawn());
  };
  const bool inTime = process_.loop->run(over, process_.deadline);
  if (!problem->empty()) return fail(*problem);
  if (!inTime) posix::standardErrorLines()("The user did nothing with the notification");
  if (responded_) device_.device->noteTapped(identifier);
  return 0;
}

void ApplicationRun::end() {
  const auto nothingLeft = [&] { return process_.session->idle(); };
  const auto end = posix::EventLoop::Clock::now() + posix::loopDuration(farewellSeconds);
  process_.session->close();
  process_.loop->run(nothingLeft, end);
  process_.channel->send("ended", JSONAny::Dictionary{{"initialised", VorselKellp::isInitialised()}});
  // A user who has not answered by now never will; what the library makes of it has no way out any more, like
  // on a phone that ends an application under its dialog.
  device_.notificationCenter->endQuestion();
  process_.loop->run(nothingLeft, end);
}

void ApplicationRun::noteDelegateCall(std::string_view name, JSONAny::List arguments) {
  process_.channel->send(
      "delegate", JSONAny::Dictionary{{"name", std::string(name)}, {"arguments", std::move(arguments)}});
}

}  // namespace VorselKelp::simulator
