#include "agent/disturbed/Disturbance.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "VorselKelpPosix/Services.h"
#include "VorselKelpWebPush/Message.h"
#include "state/State.h"

namespace VorselKelp::agent {
namespace {

namespace fs = std::filesystem;

constexpr const char* titles[] = {"one", "two", "three"};
constexpr const char* reminder = "reminder";
constexpr const char* last = "last";  // its successor shows it
/// Milliseconds that a disturbed agent which goes on is given.
constexpr unsigned patience = 1500;

}  // namespace

bool thorough() {
  return std::getenv("VORSEL_THOROUGH") != nullptr;
}

Row::~Row() {
  if (!thorough()) return;
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - began;
  std::printf("ROW|%s|%d|%ld|%d|%.1f\n", what.c_str(), rounds, hits, faults, seconds.count());
  std::fflush(stdout);
}

bool Disturbance::permitted() {
  return std::system((std::string(INJECTOR) + " --under /nowhere -- true 2> /dev/null").c_str()) == 0;
}

Disturbance::Disturbance() : server_(address), application_(address) {
  desk_ = &startDistributor("desk");
  subscribe();
  waitUntilRunning(false);
  (void)State::open(file("data/com.example.app/vorselkelp/push"));  // waits until the agent has closed it
  fs::copy(file("data"), file("template"), fs::copy_options::recursive);
  // The kernel shortens a program's name.
  start(std::string(INJECTOR) + " --under " + path + " --process vorsel-push-age --report " + file("report"),
        "0.1");
}

void Disturbance::putBack() {
  for (const char* name : {"data", "config", "report", "lines"}) fs::remove_all(file(name));
  fs::copy(file("template"), file("data"), fs::copy_options::recursive);
  server_.shown.clear();
  application_.activations.clear();
  answers_.clear();
  again_.clear();
  taken_ = 0;
}

std::size_t Disturbance::timesShown(const std::string& title) const {
  return static_cast<std::size_t>(
      std::ranges::count(server_.shown, title, [](const auto& each) { return each.title; }));
}

/// As the application does: what it is told of, and with its next start what was kept for it.
void Disturbance::takeResponses() {
  for (const auto& activation : std::exchange(application_.activations, {})) {
    const auto begin = activation.target.find('\'') + 1;
    const auto identifier = activation.target.substr(begin, activation.target.find('\'', begin) - begin);
    if (store->claimResponse(identifier, std::string(platform::defaultActionIdentifier))) ++taken_;
    store->noteTapped(identifier);
  }
  taken_ += store->takeResponses().size();
}

/// The injector reports when all of its processes have gone.
bool Disturbance::ended() {
  std::error_code error;
  return fs::file_size(file("report"), error) > 0 && !error;
}

/// False when the disturbed agent went, or had to, before.
bool Disturbance::until(const std::function<bool()>& done) {
  if (!disturbed_) {
    waitUntil(done);
    return !HasFatalFailure();
  }
  bool late = false;
  const auto timer = g_timeout_add(
      patience,
      [](gpointer flag) -> gboolean {
        *static_cast<bool*>(flag) = true;
        return G_SOURCE_CONTINUE;
      },
      &late);
  waitUntil([&] { return done() || ended() || late; });
  g_source_remove(timer);
  return done();
}

void Disturbance::sendMissing() {
  std::vector<std::string> all(std::begin(titles), std::end(titles));
  if (!disturbed_) all.emplace_back(last);
  for (const auto& title : all) {
    const auto answer = answers_.find(title);
    if (answer != answers_.end() && answer->second) continue;
    answers_.erase(title);
    const auto sent =
        desk_->send(desk_->registrations().begin()->first, *webpush::encrypt(payload(title), *subscription),
                    title, [this, title](const Status& status) { answers_.insert_or_assign(title, status); });
    EXPECT_TRUE(sent);
  }
}

bool Disturbance::go() {
  sendMissing();
  ask("Look");
  const auto answered = [this](const char* title) {
    const auto answer = answers_.find(title);
    return answer != answers_.end() && answer->second;
  };
  if (!until([&] {
        return std::ranges::all_of(titles, answered) &&
               std::ranges::all_of(titles, [this](const char* title) { return timesShown(title) > 0; }) &&
               timesShown(disturbed_ ? reminder : last) > 0;
      }))
    return false;
  takeResponses();
  if (taken_ == 0) {
    const auto tapped = std::ranges::find(server_.shown.rbegin(), server_.shown.rend(), titles[0],
                                          [](const auto& each) { return each.title; });
    server_.invoke(tapped->number, "default");
    if (!until([this] { return !application_.activations.empty(); })) return false;
    takeResponses();
  }
  if (!disturbed_) {
    const auto listed = store->delivered();
    EXPECT_TRUE(timesShown(reminder) > 0 || std::ranges::any_of(listed, [](const auto& each) {
                  return each.request.identifier == reminder;
                }));
    killAgent();
    return true;
  }
  for (const auto& shown : server_.shown) server_.close(shown.number, 2);
  return until([this] { return ended(); });
}

/// What the agent that went had written, read from a copy: its successor shall find what it left.
void Disturbance::judge() {
  const auto folder =
      system::foldersOf(*system::parseDescription(R"({"bundleIdentifier":"com.example.app"})")).data;
  fs::remove_all(file("copy"));
  fs::copy(folder + "/push", file("copy"));
  auto state = State::open(file("copy"));
  ASSERT_TRUE(state) << state.error().description;
  const auto waiting = *(*state)->waiting();
  std::set<std::string> spooled;
  for (const auto serial : waiting) {
    const auto bytes = (*(*state)->message(serial))->bytes;
    const auto keys = *(*state)->keys(0);
    const auto text = webpush::decrypt(bytes, keys.front());
    ASSERT_TRUE(text);
    for (const std::string title : titles)
      if (*text == payload(title)) spooled.insert(title);
  }
  for (const std::string title : titles) {
    const bool shown = timesShown(title) > 0;
    if (spooled.contains(title)) {
      if (shown) again_.insert(title);
    } else if (const auto answer = answers_.find(title); answer != answers_.end() && answer->second) {
      EXPECT_TRUE(shown) << title << " was acknowledged, and is lost";
    }
  }
}

Disturbance::Report Disturbance::round(const std::string& options) {
  putBack();
  std::ofstream(file("disturbance")) << options;
  platform::NotificationRequest request;
  request.identifier = reminder;
  request.content.title = reminder;
  request.trigger = {0.01, false};
  EXPECT_TRUE(store->schedule(request));
  disturbed_ = true;
  const bool whole = go();
  // The disturbed one, or another that a late call has started behind it.
  if (!whole) killAgent();
  disturbed_ = false;
  waitUntil([this] { return ended(); });
  // The bus has heard the last of the agent when it knows that it has gone.
  waitUntilRunning(false);
  server_.catchUp();
  Report report;
  std::ifstream stream(file("report"));
  std::string line((std::istreambuf_iterator<char>(stream)), {});
  std::sscanf(line.c_str(), "{\"calls\":%ld,\"hits\":%ld", &report.calls, &report.hits);
  report.first = line;
  if (!whole) {
    judge();
    EXPECT_TRUE(go()) << "with nothing in the way";
  }
  for (const std::string title : titles)
    EXPECT_LE(timesShown(title), again_.contains(title) ? 2U : 1U) << title;
  EXPECT_LE(timesShown(reminder), 1U);
  takeResponses();
  EXPECT_EQ(taken_, 1U) << "responses";
  return report;
}

void Disturbance::roundsAtEach(const std::string& options, int every, Row& row) {
  for (int at = 1;; at += every) {
    const auto report = round(options + " --at " + std::to_string(at));
    if (report.hits == 0 && !HasFailure()) break;
    ++row.rounds;
    row.hits += report.hits;
    if (!HasFailure()) continue;
    ++row.faults;
    FAIL() << options << " at " << at << ": " << report.first << lines();
  }
}

}  // namespace VorselKelp::agent
