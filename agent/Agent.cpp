#include "Agent.h"

#include <glib-unix.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "VorselKelpFreedesktop/Application.h"
#include "VorselKelpFreedesktop/DesktopPorts.h"
#include "VorselKelpFreedesktop/LauncherBadge.h"
#include "VorselKelpFreedesktop/PortalNotifications.h"
#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpPosix/Services.h"
#include "VorselKelpSystem/WakeUp.h"
#include "program/Program.h"

namespace VorselKelp::agent {
namespace {

// Seconds.
constexpr double answerPause = 0.05;
constexpr double busyPause = 0.2;

std::string serviceName(const system::Description& description) {
  return description.bundleIdentifier + ".Push";
}

std::string textOf(const char* variable) {
  const char* value = std::getenv(variable);
  return value ? value : "";
}

}  // namespace

Agent::Agent(system::Description description, AgentOptions options)
    : description_(std::move(description)),
      options_(std::move(options)),
      name_(serviceName(description_)),
      folders_(system::foldersOf(description_)),
      loop_(g_main_loop_new(nullptr, FALSE)),
      queue_(freedesktop::makeMainQueue()),
      store_(std::make_shared<system::NotificationStore>(folders_.notifications,
                                                         description_.bundleIdentifier, posix::makeClock())),
      quiet_(queue_, [this] { look(); }) {}

Agent::~Agent() {
  // What waits on the queue may hold what goes here.
  queue_->close();
  g_main_loop_unref(loop_);
}

int Agent::run() {
  if (const auto status = start(); !status) {
    posix::standardErrorLines()(status.error().description);
    return 1;
  }
  const auto onSignal = +[](gpointer self) -> gboolean {
    static_cast<Agent*>(self)->told_ = true;
    static_cast<Agent*>(self)->leave();
    return G_SOURCE_CONTINUE;
  };
  const auto terminated = g_unix_signal_add(SIGTERM, onSignal, this);
  const auto interrupted = g_unix_signal_add(SIGINT, onSignal, this);
  g_main_loop_run(loop_);
  g_source_remove(terminated);
  g_source_remove(interrupted);
  return exitStatus_;
}

/// Nothing here may wait: whoever activates the agent waits for its name.
Status Agent::start() {
  auto bus = Bus::connect(options_.busAddress);
  if (!bus) return bus.error();
  bus_ = *std::move(bus);
  bus_->whenClosed([this] { end(0); });
  state_ = std::make_unique<StateThread>(queue_);
  numbers_ = std::make_unique<DesktopNumbers>(*bus_, *state_);
  const auto distributor = textOf("UNIFIEDPUSH_DISTRIBUTOR");
  registration_ = std::make_unique<Registration>(
      *bus_, queue_,
      RegistrationOptions{name_, description_.name, description_.remoteNotifications.vapidKey,
                          distributor.empty() ? description_.remoteNotifications.distributor : distributor},
      [this] {
        service_->changed();
        lookSoon();
      });
  intake_ = std::make_shared<Intake>(*state_, *registration_, queue_, store_->clock(), [this](auto serial) {
    if (serial) road_->add(*serial);
    lookSoon();
  });
  service_ = std::make_unique<PushService>(*bus_);
  if (const auto status = service_->serve(serviceEvents()); !status) return status;
  if (const auto status = serveConnector(*bus_, connectorEvents()); !status) return status;
  bus_->requestName(name_, [this](const Result<bool>& ours) {
    if (!ours) return fail(ours.error());
    *ours ? owned() : end(0);
  });
  return Done{};
}

void Agent::owned() {
  state_->open(folders_.data + "/push",
               [this](const Status& opened) { opened ? stateOpened() : fail(opened.error()); });
}

void Agent::stateOpened() {
  watchOthers();
  const auto begun = registration_->begin(state_->state(), [this] { numbers_->find([this] { begin(); }); });
  if (!begun) fail(begun.error());
}

void Agent::begin() {
  makeServices();
  numbers_->resume(*store_, *notifications_);
  const auto waiting = state_->state().waiting();
  if (!waiting) return fail(waiting.error());
  for (const auto serial : *waiting) road_->add(serial);
  begun_ = true;
  intake_->begin();
  service_->begin();
  lookSoon();
}

void Agent::makeAutostart() {
  autostart_ = freedesktop::insideSandbox()
                   ? makePortalAutostart(state_->state(),
                                         freedesktop::makeBackgroundPortal(queue_, options_.busAddress),
                                         {programPath(), "--description", options_.descriptionFile})
                   : makeAutostartEntry(name_, description_.name, options_.descriptionFile);
}

void Agent::makeServices() {
  makeAutostart();
  application_ = std::make_unique<ApplicationDoor>(*bus_, description_.bundleIdentifier);
  taps_ = std::make_unique<Taps>(store_, *application_, [this] { lookSoon(); });
  notifications_ = freedesktop::makeNotifications(
      {.applicationName = description_.name,
       .applicationIdentifier = description_.bundleIdentifier,
       .soundFolder = {},
       .busAddress = options_.busAddress,
       .exportedAction = std::string("app.") + freedesktop::Application::responseAction,
       .numbered = [this](const std::string& identifier,
                          std::uint32_t number) { numbers_->numbered(identifier, number); }},
      queue_, [this](const auto& response) { taps_->respond(response); },
      [this](const std::string& identifier, freedesktop::CloseReason reason) {
        if (reason == freedesktop::CloseReason::dismissed) store_->noteTapped(identifier);
        numbers_->gone(identifier);
        lookSoon();
      });
  auto wakeUp = system::makeWakeUp(queue_);
  if (!wakeUp) posix::standardErrorLines()(wakeUp.error().description);
  center_ =
      system::makeNotificationCenter({store_, queue_, nullptr, freedesktop::makePresenter(notifications_),
                                      wakeUp ? *std::move(wakeUp) : nullptr,
                                      freedesktop::makeIconBadge(freedesktop::makeLauncherBadge(
                                          description_.bundleIdentifier, queue_, options_.busAddress))});
  RoadParts parts;
  parts.state = state_.get();
  parts.application = application_.get();
  parts.mainQueue = queue_;
  parts.clock = store_->clock();
  parts.store = store_;
  parts.center = center_;
  parts.delivery = system::makeDelivery(serviceProgram(), queue_);
  parts.ended = [this] { lookSoon(); };
  road_ = std::make_shared<Road>(std::move(parts), RoadOptions{description_.remoteNotifications.plaintext});
}

system::ServiceProgram Agent::serviceProgram() const {
  system::ServiceProgram service;
  service.program = description_.programs.service;
  if (service.program.empty()) {
    const auto own = programPath();
    service.program = own.substr(0, own.rfind('/')) + "/vorsel-push-service";
  }
  service.arguments = {options_.descriptionFile};
  return service;
}

ServiceEvents Agent::serviceEvents() {
  return {[this] { registration_->want(); },
          [this] { registration_->giveUp(); },
          [this] {
            center_->look();
            pending();
            lookSoon();
          },
          [this](const auto& identifiers) {
            notifications_->remove(identifiers);
            lookSoon();
          },
          [this] { return registration_->condition(); },
          registration_->wanted()};
}

ConnectorEvents Agent::connectorEvents() {
  return {[this](const auto& sender, const auto& token, auto bytes, const auto& id, auto acknowledge) {
            intake_->take(sender, token, std::move(bytes), id, std::move(acknowledge));
          },
          [this](const auto& sender, const auto& token, const auto& endpoint, auto heard) {
            registration_->whenKnown([=, this, heard = std::move(heard)]() mutable {
              registration_->newEndpoint(sender, token, endpoint);
              heard();
            });
          },
          [this](const auto& sender, const auto& token, auto heard) {
            registration_->whenKnown([=, this, heard = std::move(heard)]() mutable {
              registration_->unregistered(sender, token);
              heard();
            });
          }};
}

void Agent::watchOthers() {
  numbers_->watch([this] {
    if (begun_) road_->tryAgain();
  });
  bus_->watchOwners(description_.bundleIdentifier.c_str(), false,
                    [this](const std::string&, const std::string& owner) {
                      if (!owner.empty() && begun_) road_->applicationRuns();
                    });
}

/// Whether something is to come due. Has the agent come back for that, and for what nobody could show.
bool Agent::pending() {
  const auto next = store_->nextDue();
  const bool found = next.ok() && next->has_value();
  if (next.ok()) autostart_->want(found || !road_->idle());
  return found;
}

/// Something is under way, and ends without anybody's telling.
bool Agent::busy() const {
  return !begun_ || !taps_->idle() || !intake_->idle() || !service_->idle() || !road_->idle() ||
         !notifications_->idle() || !autostart_->idle() || registration_->asks();
}

/// Something is still to come, and tells.
bool Agent::waits() {
  if (pending() || registration_->waits()) return true;
  // Nobody else hears what the user does with what is shown; a successor that is newer shall come
  // nevertheless.
  return notifications_->awaitsUser() && !programReplaced();
}

void Agent::lookSoon() {
  quiet_.begin(options_.idleSeconds);
}

/// Whether there is anything left to stay for when nothing has happened for a while.
void Agent::look() {
  if (leaving_) return;
  if (begun_) pending();
  if (busy()) return quiet_.begin(std::max(options_.idleSeconds, busyPause));
  if (!waits()) leave();
}

/// Whoever sends to the name from now on activates a successor, which waits for the state's lock.
void Agent::leave() {
  if (std::exchange(leaving_, true)) return;
  bus_->releaseName(name_, [this] { left(); });
}

/// Everything that was sent to the name has come.
void Agent::left() {
  if (!begun_) return end(0);
  if (!intake_->idle()) return queue_->asyncAfter(answerPause, [this] { left(); });
  pending();
  if (told_ || (!busy() && !waits())) return bus_->flush([this] { end(0); });
  // Nobody goes on with what came at the last moment, unless a later call has activated a successor.
  bus_->requestName(name_, [this](const Result<bool>& ours) {
    if (!ours || !*ours) return bus_->flush([this] { end(0); });
    leaving_ = false;
    told_ ? leave() : lookSoon();
  });
}

void Agent::fail(const Error& error) {
  posix::standardErrorLines()(error.description);
  end(1);
}

void Agent::end(int status) {
  exitStatus_ = status;
  g_main_loop_quit(loop_);
}

}  // namespace VorselKelp::agent
