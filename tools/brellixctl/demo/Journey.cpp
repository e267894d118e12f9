#include "brellixctl/demo/Journey.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "VorselKelpSimulator/StoreListing.h"
#include "VorselKelpSystem/NotificationRecords.h"
#include "brellixctl/PlainText.h"
#include "brellixctl/TextFile.h"

namespace brellixctl {

using VorselKelp::JSONAny;
namespace device = VorselKelp::simulator;
namespace system = VorselKelp::system;

namespace {

constexpr const char* notification = "storm-1";
constexpr const char* campaign = "stories-1";
constexpr const char* beacon = "00000000-0000-0000-0000-000000000330";

/// Whether the application heard the publisher's page say yes.
bool saidYes(const std::vector<JSONAny>& console) {
  return std::any_of(console.begin(), console.end(), [](const JSONAny& line) {
    const auto* text = line.as<std::string>();
    return text != nullptr && text->find("pns.ok") != std::string::npos;
  });
}

}  // namespace

bool Journey::run() {
  if (!plan_.json) std::puts("The road of one notification. Every process is real, and so is the server.\n");
  const bool done = start() && deliver() && open() && browse() && lookAround() && advertise() && publish();
  if (plan_.json) {
    printSteps();
  } else {
    std::printf("\n%s\n", done ? "The notification went the whole road."
                               : "The journey ended early; the step marked FAILED says why.");
  }
  return done;
}

LaunchRequest Journey::launchRequest() const {
  LaunchRequest request;
  request.display = plan_.display;
  if (plan_.display) request.pictures = plan_.pictures;
  return request;
}

void Journey::begin(Lane lane, const std::string& what) {
  record_.setActor(lane);
  record_.add({Lane::user, std::nullopt, what, {}, {}, {}, true});
}

template <class Outcome>
void Journey::end(Lane lane, const Outcome& outcome) {
  if constexpr (requires { outcome.pictures; }) record_.notePictures(lane, outcome.pictures);
  record_.noteStore(lane, device::listGroupDefaults(plan_.target.manifest, plan_.target.home));
  record_.noteConsole(lane, outcome.console);
}

bool Journey::start() {
  begin(Lane::application, "starts the application for the first time");
  auto request = launchRequest();
  request.answer = "allow";
  request.prompt = "ok";
  const auto outcome = launch(plan_.target, request);
  if (!outcome) return note("launch", false, outcome.error().description);
  end(Lane::application, *outcome);
  bool ok = note("launch", outcome->initialised, "the application started and initialised the library");
  ok = ok && expect("configuration", "GET", "/tag/k-123.json", "its remote configuration was fetched");
  ok = ok && expect("install", "POST", "/v2/activity?type=mobile", "the installation was reported");
  ok = ok && note("permission page", saidYes(outcome->console), "the user agreed on the publisher's page");
  ok = ok && note("permission", outcome->authorisation == "authorized",
                  "the user was asked and allowed notifications");
  ok = ok && expectBody("register", "/v2/users?type=mobile", outcome->token.value_or("no token"),
                        "the device token reached the server");
  ok = ok &&
       expectBody("screens", "/v2/users?type=mobile", R"("scn":1)", "one screen was counted: the page's");
  return ok;
}

bool Journey::deliver() {
  begin(Lane::serviceExtension, "is on the way when a push arrives");
  PushRequest request;
  request.payloadPath = plan_.push;
  request.identifier = notification;
  const auto outcome = push(plan_.target, request);
  if (!outcome) return note("push", false, outcome.error().description);
  end(Lane::serviceExtension, *outcome);
  noteShown(*outcome);
  const auto& content = outcome->shown.content;
  bool ok = note("push", outcome->extension == "answered" && content.body.starts_with("Gusts"),
                 "the service extension prepared \"" + content.title + "\" (" + outcome->extension + ")");
  ok = ok && expect("view tracker", "GET", "/track/view?id=storm", "the view was tracked");
  ok = ok && expect("image", "GET", "/images/storm.png", "the picture was downloaded");
  ok =
      ok && note("attachment",
                 content.attachments.size() == 1 && std::filesystem::exists(content.attachments.front().path),
                 "the picture is attached");
  ok = ok && note("buttons", outcome->actions.size() == 2, "two buttons are registered: Follow and No");
  ok = ok && expect("impression tracker", "GET", "/track/impression?id=storm", "the impression was tracked");
  return ok;
}

/// The notification as the user sees it.
void Journey::noteShown(const PushOutcome& outcome) {
  const auto& content = outcome.shown.content;
  std::string detail = content.body;
  for (const auto& action : outcome.actions) detail += "  [" + action.title + "]";
  std::vector<std::string> pictures;
  for (const auto& attachment : content.attachments) {
    if (auto bytes = readTextFile(attachment.path)) pictures.push_back(*std::move(bytes));
  }
  record_.add({Lane::user,
               std::nullopt,
               "sees \"" + content.title + "\"",
               std::move(detail),
               {},
               std::move(pictures),
               true});
}

bool Journey::open() {
  begin(Lane::application, "taps the notification");
  TapRequest request;
  request.display = plan_.display;
  if (plan_.display) request.pictures = plan_.pictures;
  request.identifier = notification;
  const auto outcome = tap(plan_.target, request);
  if (!outcome) return note("tap", false, outcome.error().description);
  end(Lane::application, *outcome);
  const auto page = watch_.server() + "/articles/storm?button=0";
  bool ok = note("tap", outcome->browser && *outcome->browser == JSONAny(page), "the browser shows " + page);
  ok = ok && expect("click tracker", "GET", "/track/click?id=storm", "the click was tracked");
  return ok;
}

bool Journey::browse() {
  begin(Lane::serviceExtension, "gets a campaign of three stories");
  PushRequest pushed;
  pushed.payloadPath = plan_.carousel;
  pushed.identifier = campaign;
  const auto delivered = push(plan_.target, pushed);
  if (!delivered) return note("campaign", false, delivered.error().description);
  noteShown(*delivered);
  begin(Lane::contentExtension, "opens a campaign's area, pages on, and taps the second story");
  ShowRequest request;
  request.identifier = campaign;
  request.acts = "right,open";
  request.display = plan_.display;
  if (plan_.display) request.pictures = plan_.pictures;
  const auto outcome = show(plan_.target, request);
  if (!outcome) return note("carousel", false, outcome.error().description);
  end(Lane::contentExtension, *outcome);
  const auto* title = outcome->carousel ? outcome->carousel->find("title") : nullptr;
  bool ok = note("carousel", title != nullptr && *title == JSONAny("Harbour museum opens its new wing"),
                 "the content extension shows the second of three stories");
  ok = ok && expect("story tracker", "GET", "/track/impression?id=museum", "the story was tracked");
  ok = ok && expect("conversion", "GET", "/track/click?id=museum", "its opening was tracked");
  const auto page = watch_.server() + "/articles/museum";
  return ok && note("open", outcome->opened && *outcome->opened == JSONAny(page), "it leads to " + page);
}

/// What the library does beside the road: a second start, near a beacon.
bool Journey::lookAround() {
  bool ok = note("badge", plan_.target.device().badge() == 1, "the icon shows one unread notification");
  begin(Lane::application, "starts the application again, near a beacon");
  auto request = launchRequest();
  request.pictures.clear();
  request.beacons = {std::string("enter:") + beacon};
  request.calls = {R"(track=[{"article":"storm"}])", "sendTrack=[]", "updateScheduler=[]"};
  const auto outcome = launch(plan_.target, request);
  if (!outcome) return note("second start", false, outcome.error().description);
  end(Lane::application, *outcome);
  ok = ok && expectBody("tracking report", "/v2/activity?type=mobile", R"("e":{"article":"storm"})",
                        "the tracking parameters were sent");
  ok = ok && note("beacon", waits("notification.id.1"), "entering a beacon's region will be told");
  return ok && note("reminder", waits("UUID().uuidString"), "the user will be reminded every hour");
}

bool Journey::advertise() {
  begin(Lane::application, "reads on, and is shown an ad");
  auto request = launchRequest();
  request.calls = {R"(presentInterstitial=["front"])", "closeInterstitial=[]"};
  const auto outcome = launch(plan_.target, request);
  if (!outcome) return note("interstitial", false, outcome.error().description);
  end(Lane::application, *outcome);
  bool ok =
      note("interstitial", outcome->failure.empty(), "an ad was shown over the application, and closed");
  ok = ok && expect("ad's picture", "GET", "/images/ad.png", "its picture was downloaded");
  return ok && expect("ad's impression", "GET", "/ad/impression?l2=slot-7", "its impression was tracked");
}

/// The same application through the publisher's facade.
bool Journey::publish() {
  begin(Lane::application, "starts the same application, built with the publisher's facade");
  const auto outcome = launch(plan_.facade, launchRequest());
  if (!outcome) return note("facade", false, outcome.error().description);
  end(Lane::application, *outcome);
  bool ok = note("facade", outcome->initialised, "the application started through the facade");
  for (const char* action : {"ask", "allow"}) {
    const auto path = std::string("/?cat=webpush&pid=42&src=news&v=2.0.0&platform_type=ios&action=") + action;
    ok = ok && expect("publisher event", "GET", path, "the publisher was told");
  }
  return ok;
}

/// Whether the device holds this notification for later, or has just delivered it.
bool Journey::waits(const std::string& identifier) {
  auto device = plan_.target.device();
  const auto has = [&](const std::vector<system::HeldNotification>& held) {
    return std::any_of(held.begin(), held.end(),
                       [&](const auto& each) { return each.request.identifier == identifier; });
  };
  return has(device.pending()) || has(device.delivered());
}

bool Journey::expect(const char* step, const char* method, const std::string& path, const std::string& what) {
  return note(step, watch_.saw(method, path, ""), what + ": " + method + " " + path);
}

bool Journey::expectBody(const char* step, const std::string& path, const std::string& text,
                         const std::string& what) {
  return note(step, watch_.saw("POST", path, text), what + ": POST " + path);
}

bool Journey::note(std::string name, bool ok, std::string detail) {
  if (!plan_.json) {
    std::printf("%-7s %-19s %s\n", ok ? "ok" : "FAILED", name.c_str(), plainText(detail).c_str());
    std::fflush(stdout);
  }
  if (!ok) record_.add({Lane::user, std::nullopt, "FAILED: " + name, detail, {}, {}, false});
  steps_.push_back({std::move(name), ok, std::move(detail)});
  return ok;
}

void Journey::printSteps() const {
  JSONAny::List list;
  for (const auto& step : steps_) {
    list.push_back(JSONAny::Dictionary{{"step", step.name}, {"ok", step.ok}, {"detail", step.detail}});
  }
  std::printf("%s\n", system::encodeLossy(std::move(list)).c_str());
}

}  // namespace brellixctl
