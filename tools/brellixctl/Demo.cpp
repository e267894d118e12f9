#include <stdlib.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>

#include "VorselKelpLinux/NotificationRecords.h"
#include "brellixctl/Commands.h"
#include "brellixctl/PlainText.h"
#include "brellixctl/RequestWatch.h"
#include "collection_server/CollectionServer.h"

namespace brellixctl {

using collection_server::CollectionServer;
using VorselKelp::JSONAny;
using VorselKelp::Result;
namespace device = VorselKelp::linux_platform;

namespace {

constexpr const char* notification = "storm-1";
constexpr const char* beacon = "00000000-0000-0000-0000-000000000330";

/// A folder that goes with its object.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    auto pattern = (std::filesystem::temp_directory_path() / "brellixctl-demo-XXXXXX").string();
    if (::mkdtemp(pattern.data()) != nullptr) path_ = pattern;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  [[nodiscard]] const std::string& path() const { return path_; }

  [[nodiscard]] std::string write(const std::string& name, const JSONAny& json) const {
    auto file = path_ + "/" + name;
    std::ofstream(file) << device::encodeLossy(json) << '\n';
    return file;
  }

 private:
  std::string path_;
};

/// The application's manifest; through the facade when `layer` says so.
JSONAny manifestFor(const std::string& server, const char* layer) {
  JSONAny::Dictionary endpoints;
  for (const char* name : {"collection", "tag", "events", "adFeed", "script"})
    endpoints.push_back({name, server});
  return JSONAny::Dictionary{
      {"bundleIdentifier", "com.example.news"},
      {"version", "3.1.0"},
      {"apiKey", "k-123"},
      {"appGroupId", "group.com.example.news"},
      {"layer", layer},
      {"switches", JSONAny::Dictionary{{"push", true}, {"analytics", true}, {"beacon", true}}},
      {"schedule", 3600},
      {"publisher", JSONAny::Dictionary{{"id", "42"}, {"source", "news"}}},
      {"endpoints", std::move(endpoints)}};
}

JSONAny payloadFor(const std::string& server) {
  const JSONAny follow = JSONAny::Dictionary{
      {"action", "follow"}, {"title", "Follow"}, {"url", server + "/follow?button=${VA_BACID}"}};
  const JSONAny no = JSONAny::Dictionary{{"action", "no"}, {"title", "No"}};
  const JSONAny data = JSONAny::Dictionary{{"url", server + "/articles/storm?button=${VA_BACID}"},
                                           {"t", JSONAny::List{server + "/track/click?id=storm"}}};
  const JSONAny message = JSONAny::Dictionary{{"body", "Gusts of 110 km/h are expected tonight."},
                                              {"sound", "ping"},
                                              {"image", server + "/images/storm.png"},
                                              {"actions", JSONAny::List{follow, no}},
                                              {"data", data}};
  const JSONAny alert = JSONAny::Dictionary{{"title", "Storm over the bay"},
                                            {"n", message},
                                            {"v", server + "/track/view?id=storm"},
                                            {"t", JSONAny::List{server + "/track/impression?id=storm"}}};
  return JSONAny::Dictionary{{"aps", JSONAny::Dictionary{{"mutable-content", 1}, {"alert", alert}}}};
}

/// What one step of the journey came to.
struct Step {
  std::string name;
  bool ok;
  std::string detail;
};

class Journey {
 public:
  Journey(Target target, Target facade, std::string payload, RequestWatch& watch, bool json)
      : target_(std::move(target)),
        facade_(std::move(facade)),
        payload_(std::move(payload)),
        watch_(watch),
        json_(json) {}

  int run() {
    if (!json_) std::puts("The road of one notification. Every process is real, and so is the server.\n");
    const bool done = start() && deliver() && open() && lookAround() && publish();
    if (json_) {
      printSteps();
    } else {
      std::printf("\n%s\n", done ? "The notification went the whole road."
                                 : "The journey ended early; the step marked FAILED says why.");
    }
    return done ? 0 : 1;
  }

 private:
  bool start() {
    LaunchRequest request;
    request.answer = "allow";
    const auto outcome = launch(target_, request);
    if (!outcome) return note("launch", false, outcome.error().description);
    bool ok = note("launch", outcome->initialised, "the application started and initialised the library");
    ok = ok && expect("configuration", "GET", "/tag/k-123.json", "its remote configuration was fetched");
    ok = ok && expect("install", "POST", "/v2/activity?type=mobile", "the installation was reported");
    ok = ok && note("permission", outcome->authorisation == "authorized",
                    "the user was asked and allowed notifications");
    ok = ok && expectBody("register", "/v2/users?type=mobile", outcome->token.value_or("no token"),
                          "the device token reached the server");
    return ok;
  }

  bool deliver() {
    PushRequest request;
    request.payloadPath = payload_;
    request.identifier = notification;
    const auto outcome = push(target_, request);
    if (!outcome) return note("push", false, outcome.error().description);
    const auto& content = outcome->shown.content;
    bool ok = note("push", outcome->extension == "answered" && content.body.starts_with("Gusts"),
                   "the service extension prepared \"" + content.title + "\" (" + outcome->extension + ")");
    ok = ok && expect("view tracker", "GET", "/track/view?id=storm", "the view was tracked");
    ok = ok && expect("image", "GET", "/images/storm.png", "the picture was downloaded");
    ok = ok &&
         note("attachment",
              content.attachments.size() == 1 && std::filesystem::exists(content.attachments.front().path),
              "the picture is attached");
    ok = ok && note("buttons", outcome->actions.size() == 2, "two buttons are registered: Follow and No");
    ok =
        ok && expect("impression tracker", "GET", "/track/impression?id=storm", "the impression was tracked");
    return ok;
  }

  bool open() {
    TapRequest request;
    request.identifier = notification;
    const auto outcome = tap(target_, request);
    if (!outcome) return note("tap", false, outcome.error().description);
    const auto page = watch_.server() + "/articles/storm?button=0";
    bool ok =
        note("tap", outcome->browser && *outcome->browser == JSONAny(page), "the browser shows " + page);
    ok = ok && expect("click tracker", "GET", "/track/click?id=storm", "the click was tracked");
    return ok;
  }

  /// What the library does beside the road: a second start, near a beacon.
  bool lookAround() {
    bool ok = note("badge", target_.device().badge() == 1, "the icon shows one unread notification");
    LaunchRequest request;
    request.beacons = {std::string("enter:") + beacon};
    request.calls = {R"(track=[{"article":"storm"}])", "sendTrack=[]", "updateScheduler=[]"};
    const auto outcome = launch(target_, request);
    if (!outcome) return note("second start", false, outcome.error().description);
    ok = ok && expectBody("tracking report", "/v2/activity?type=mobile", R"("e":{"article":"storm"})",
                          "the tracking parameters were sent");
    ok = ok && note("beacon", waits("notification.id.1"), "entering a beacon's region will be told");
    return ok && note("reminder", waits("UUID().uuidString"), "the user will be reminded every hour");
  }

  /// The same application through the publisher's facade.
  bool publish() {
    const auto outcome = launch(facade_, {});
    if (!outcome) return note("facade", false, outcome.error().description);
    bool ok = note("facade", outcome->initialised, "the application started through the facade");
    for (const char* action : {"ask", "allow"}) {
      const auto path =
          std::string("/?cat=webpush&pid=42&src=news&v=2.0.0&platform_type=ios&action=") + action;
      ok = ok && expect("publisher event", "GET", path, "the publisher was told");
    }
    return ok;
  }

  /// Whether the device holds this notification for later, or has just delivered it.
  bool waits(const std::string& identifier) {
    auto device = target_.device();
    const auto has = [&](const std::vector<device::HeldNotification>& held) {
      return std::any_of(held.begin(), held.end(),
                         [&](const auto& each) { return each.request.identifier == identifier; });
    };
    return has(device.pending()) || has(device.delivered());
  }

  bool expect(const char* step, const char* method, const std::string& path, const std::string& what) {
    return note(step, watch_.saw(method, path, ""), what + ": " + method + " " + path);
  }

  bool expectBody(const char* step, const std::string& path, const std::string& text,
                  const std::string& what) {
    return note(step, watch_.saw("POST", path, text), what + ": POST " + path);
  }

  bool note(std::string name, bool ok, std::string detail) {
    if (!json_) {
      std::printf("%-7s %-19s %s\n", ok ? "ok" : "FAILED", name.c_str(), plainText(detail).c_str());
      std::fflush(stdout);
    }
    steps_.push_back({std::move(name), ok, std::move(detail)});
    return ok;
  }

  void printSteps() const {
    JSONAny::List list;
    for (const auto& step : steps_) {
      list.push_back(JSONAny::Dictionary{{"step", step.name}, {"ok", step.ok}, {"detail", step.detail}});
    }
    std::printf("%s\n", device::encodeLossy(std::move(list)).c_str());
  }

  const Target target_;
  const Target facade_;
  const std::string payload_;
  RequestWatch& watch_;
  const bool json_;
  std::vector<Step> steps_;
};

}  // namespace

int runDemo(const CommonOptions& common) {
  const TemporaryFolder folder;
  if (folder.path().empty()) return fail("Cannot make a folder for the demonstration's device");
  RequestWatch watch;
  collection_server::ServerOptions options;
  options.received = [&watch](const collection_server::ReceivedRequest& request) { watch.note(request); };
  const auto server = CollectionServer::start(std::move(options));
  if (!server) return fail(server.error());
  watch.setServer((*server)->url());
  const auto payload = folder.write("storm.json", payloadFor(watch.server()));
  const auto home = folder.path() + "/device";
  auto target = Target::open(home, folder.write("news.json", manifestFor(watch.server(), "core")));
  if (!target) return fail(target.error());
  auto facade = Target::open(home, folder.write("facade.json", manifestFor(watch.server(), "facade")));
  if (!facade) return fail(facade.error());
  return Journey(std::move(*target), std::move(*facade), payload, watch, common.json).run();
}

}  // namespace brellixctl
