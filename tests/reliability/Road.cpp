#include "reliability/Road.h"

#include <utility>

#include "content_ext/CarouselTest.h"

namespace VorselKelp::reliability {
namespace {

using testing_platform::FaultPlan;
using testing_platform::MemoryPlatform;
using testing_platform::MemoryURLSession;
using testing_platform::ProcessKind;

constexpr const char* adFeed =
    R"({"items":[{"md":{"l2":"s","img":"https://i/ad.png","cmpid":7,"url":"https://u","title":"An ad",)"
    R"("cpm_t":[],"cpv_t":[],"cpc_t":[],"creid":1},"s":true,"w":390,"h":844}],"session_id":"s","elapsed":3,)"
    R"("ts":"0"})";

class DeepLinks final : public VorselKellpDelegate {
 public:
  explicit DeepLinks(std::vector<std::string>& opened) : opened_(opened) {}
  void handleURL(const std::string& url) override { opened_.push_back(url); }

 private:
  std::vector<std::string>& opened_;
};

}  // namespace

std::string Message::payload() const {
  const std::string name = identifier;
  if (ad)
    return R"({"aps":{"alert":{"title":"Ad","adex":true,"e":"https://feed/ad?a=1"},"mutable-content":1}})";
  const std::string picture = image ? R"("image":"https://i/)" + name + R"(.png",)" : "";
  return R"({"aps":{"mutable-content":1,"alert":{"title":"Title of )" + name + R"(","v":"https://view/)" +
         name + R"(","t":["https://impression/)" + name + R"("],"n":{)" + picture +
         R"("body":"B","tag":"front",)" + R"("actions":[{"action":"yes","title":"Yes","url":"app://yes/)" +
         name + R"("},{"action":"no","title":"No","url":"app://no/)" + name + R"("}],"data":{"url":")" +
         link() + R"(","t":[")" + trackers()[0] + R"(",")" + trackers()[1] + R"("]}}}}})";
}

std::vector<std::string> Message::trackers() const {
  return {std::string("https://click/1/") + identifier, std::string("https://click/2/") + identifier};
}

std::string Message::link() const {
  return std::string("https://open/") + identifier;
}

/// One life of a process; what the test sees of it counts only as long as it is not killed.
class Road::Process {
 public:
  Process(Road& road, ProcessKind kind, const char* bundle)
      : road_(road), memory_(road.device, kind, bundle), plan_(road.plan_) {
    road_.used_.push_back(plan_);
    auto& session = *memory_.urlSession;
    session.setRule("*", KellpAnswers::ok());
    session.setRule("/tag/key.json", KellpAnswers::with(200, R"({"push_config":{"prompts":[]}})"));
    session.setRule("/v2/activity", KellpAnswers::with(201, "{}"));
    session.setRule("/v2/users", KellpAnswers::with(201, "{}"));
    session.setRule("/ad", KellpAnswers::with(200, adFeed));
    for (const char* picture : {"/first.png", "/second.png", "/ad.png"})
      session.setRule(picture, KellpAnswers::with(200, testing_platform::pngBeginning(2, 2)));
    VorselKellp::install(testing_platform::faulty(*memory_.platform(), plan_));
    VorselKellp::setValueFor(group);
    VorselKellp::setVorselDelegate(delegate_);
  }
  ~Process() {
    settle();
    VorselKellp::uninstall();
    plan_->end();
    settle();
    note();
    if (plan_->stopped()) road_.heal();
  }

  /// Runs a step, unless the process is dead.
  template <class Step>
  void run(Step step) {
    if (plan_->stopped()) return;
    step();
    settle();
  }
  /// Late answers come now.
  void settle() {
    do {
      memory_.settle();
    } while (plan_->releaseAnswers() > 0);
  }
  [[nodiscard]] bool stopped() const { return plan_->stopped(); }
  MemoryPlatform& memory() { return memory_; }

 private:
  struct KellpAnswers {
    static testing_platform::ServerAnswer with(int code, std::string body) {
      return status(code, std::move(body));
    }
    static testing_platform::ServerAnswer ok() { return status(200); }
  };

  void note() {
    for (const auto& page : memory_.browser->pages()) road_.opened.push_back(page);
    for (const auto& line : memory_.console->texts()) {
      road_.opensAsked += line == "ENTER OPEN ACTIVITY" || line.starts_with("INSTALL SENT ") ? 1 : 0;
      road_.opensAccepted += line == "Open sent" ? 1 : 0;
    }
    for (const auto& url : memory_.urlSession->urls()) {
      if (url.starts_with("https://click/")) road_.clicked.push_back(url);
    }
  }

  Road& road_;
  MemoryPlatform memory_;
  const std::shared_ptr<FaultPlan> plan_;
  const std::shared_ptr<VorselKellpDelegate> delegate_ = std::make_shared<DeepLinks>(road_.opened);
};

Road::Road(std::shared_ptr<FaultPlan> plan) : plan_(std::move(plan)) {
  device->addGroup(group);
}

void Road::launch() {
  ++launches;
  Process process(*this, ProcessKind::application, MemoryPlatform::defaultBundleIdentifier);
  process.run([] {
    VorselKellp::initialize(VorselBuilder("key", group).push().scheduleNotifications(3600).build());
  });
  process.run([&] { process.memory().application->becomeActive(); });
  process.run([] { VorselKellp::askForNotificationsPermission(); });
  process.run([] {
    const std::uint8_t token[]{1, 2, 3};
    VorselKellp::registerToken(token);
  });
  process.run([&] {
    ++opensAsked;
    VorselKellp::sendCustomEvent("event", 1);
  });
  process.run([] {
    VorselKellp::updateScheduler();
    VorselKellp::setAppBadge(3);
    VorselKellp::track({{"a", 1}});
    VorselKellp::sendTrack([](const auto&...) {});
    VorselKellp::didReciveAdministrativeNotificationWith(
        platform::UserInfo::fromJSON(R"({"aps":{"alert":{"gl":[{"c":["1","2"],"id":"g"}]}}})"),
        [](const auto&...) {});
  });
  process.run([] { VorselKellp::addNotificationCount(nullptr); });
  if (!process.stopped() && VorselKellp::isInitialised()) ++initialised;
}

void Road::push(const Message& message) {
  Seen seen;
  platform::NotificationRequest request;
  request.identifier = message.identifier;
  request.content.title = "As sent";
  request.content.userInfo = platform::UserInfo::fromJSON(message.payload());
  auto shown = request;
  {
    Process process(*this, ProcessKind::extension, "com.example.app.service");
    const auto best = std::make_shared<platform::NotificationContent>(request.content);
    const auto handler = [&seen, &shown, &process](const auto& content) {
      if (process.stopped()) return;
      ++seen.handlerCalls;
      shown.content = *content;
    };
    process.run([&] { VorselKellp::addNotificationCount(best); });
    process.run([&] { VorselKellp::didReceiveNotification(request, best, handler); });
    process.run([&] {
      if (seen.handlerCalls == 0)
        VorselKellp::notificationBuilderWillTerminate(request.content.userInfo, best, handler);
    });
    process.settle();
    seen.stopped = process.stopped();
  }
  seen.title = shown.content.title;
  device->notificationCenter->deliver(shown);
  deliveries.push_back(seen);
}

void Road::showCampaign() {
  Process process(*this, ProcessKind::extension, "com.example.app.content");
  const auto controller = std::make_shared<ContentController>();
  controller->view()->frame = {{0, 0}, {320, 240}};
  std::shared_ptr<VorselNotificationView> view;
  process.run([&] { view = VorselNotificationView::make(delivered(carousel()), controller); });
  process.run([&] { view->performLayout(); });
}

void Road::tap(const Message& message, const std::string& action) {
  Process process(*this, ProcessKind::application, MemoryPlatform::defaultBundleIdentifier);
  platform::NotificationRequest request;
  request.identifier = message.identifier;
  process.run([&] { VorselKellp::pushTrackOpen(true, {request, action}, [](const auto&) {}); });
}

void Road::walk() {
  launch();
  push(first);
  push(second);
  push(plain);
  push(advert);
  showCampaign();
  launch();
  tap(plain, std::string(platform::defaultActionIdentifier));
  tap(second, "yes");
}

}  // namespace VorselKelp::reliability
