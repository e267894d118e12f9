// A store in which any key may hold anything, as a damaged one does, or one that another version wrote: the
// library starts, works and delivers all the same. It may stop itself only for the reasons listed here.

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <limits>

#include "VorselKelp/VorselBuilder.h"
#include "base/Text.h"
#include "core/StorageKeys.h"
#include "support/Expect.h"
#include "support/Input.h"
#include "support/Process.h"
#include "support/Stop.h"

namespace {

using namespace VorselKelp;
using platform::DefaultsValue;

constexpr auto keyCount = static_cast<unsigned>(StorageKey::consent) + 1;

/// What a user would rather have ended than counted wrong, and what can't be sent as JSON.
constexpr std::array<std::string_view, 4> allowedStops{
    "the session counter overflows", "the badge count overflows",
    "sendTrack: a text of the record is not UTF-8", "fetchAutoconfig: no URL for the configuration"};

std::int64_t integer(fuzz::Input& input) {
  constexpr std::array<std::int64_t, 6> edges{
      0, 1, -1, 2, std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()};
  const auto choice = input.byte();
  return choice < edges.size() ? edges[choice] : input.number<std::int64_t>();
}

DefaultsValue value(fuzz::Input& input, int depth = 0) {
  const unsigned kind = input.choice() % (depth < 2 ? 6 : 4);
  if (kind == 0) return {input.flag()};
  if (kind == 1) return {integer(input)};
  if (kind == 2) return {input.number<double>()};
  if (kind == 3) return {input.text()};
  const unsigned count = input.choice() % 4;
  if (kind == 4) {
    platform::TextList list;
    for (unsigned i = 0; i < count; ++i) list.push_back(input.text());
    return {list};
  }
  DefaultsValue::Map map;
  for (unsigned i = 0; i < count; ++i) {
    auto key = input.text();
    map.insert_or_assign(key.empty() ? "n-1" : std::move(key), value(input, depth + 1));
  }
  return {map};
}

/// Every key is a byte, then comes its value.
void fill(fuzz::memory::MemoryDevice& device, fuzz::Input& input) {
  const auto standard = device.standardDomain("com.example.app.service");
  for (int i = 0; i < 64 && !input.empty(); ++i) {
    const unsigned key = input.choice();
    const auto text = keyText(static_cast<StorageKey>(key % keyCount));
    auto stored = value(input);
    if (key >= 128) standard->setObject(text, stored);
    fuzz::storeOf(device).setObject(text, std::move(stored));
  }
}

/// Thousands of opens that are still owed take a while to send: most inputs settle for a few.
void oweLess(fuzz::memory::MemoryDevice& device) {
  auto& store = fuzz::storeOf(device);
  const auto key = keyText(StorageKey::openCounter);
  const auto owed = store.object(key);
  const auto* count = owed ? owed->as<std::int64_t>() : nullptr;
  if (count) store.setObject(key, {std::min<std::int64_t>(*count, 10)});
}

/// False when the process would have stopped, and be gone.
bool run(const std::function<void()>& step) {
  const auto stop = fuzz::stopOf(step);
  if (!stop) return true;
  const bool allowed =
      std::ranges::any_of(allowedStops, [&](auto reason) { return stop->starts_with(reason); });
  if (!allowed) std::fprintf(stderr, "stopped: %s\n", stop->c_str());
  FUZZ_EXPECT(allowed);
  return false;
}

platform::NotificationRequest request() {
  platform::NotificationRequest made;
  made.identifier = "n-1";
  made.content.userInfo = platform::UserInfo::fromJSON(
      R"({"aps":{"mutable-content":1,"alert":{"title":"T","t":["https://t"],"n":{"tag":"n-1","actions":[)"
      R"({"action":"a","title":"A","url":"https://a"}],"data":{"url":"https://o","t":["https://c"]}}}}})");
  return made;
}

void deliver(const std::shared_ptr<fuzz::memory::MemoryDevice>& device,
             const fuzz::memory::ServerAnswer& answer) {
  fuzz::Process extension(device, fuzz::memory::ProcessKind::extension, "com.example.app.service");
  extension.platform.urlSession->setRule("*", answer);
  int handled = 0;
  FUZZ_EXPECT(run([&] {
    VorselKellp::didReceiveNotification(request(), std::make_shared<platform::NotificationContent>(),
                                        [&](const auto& content) {
                                          ++handled;
                                          FUZZ_EXPECT(content->title == "T");
                                        });
    extension.platform.settle();
  }));
  FUZZ_EXPECT(handled == 1);
  auto& store = fuzz::storeOf(*device);
  FUZZ_EXPECT(store.mapEntry("vs_t", {"n-1"}, platform::MapKind::listMap));
  FUZZ_EXPECT(store.mapEntry("vs_url", {"n-1", "a"}, platform::MapKind::textMapMap));
}

bool start(fuzz::Process& application) {
  return run([&] {
    VorselKellp::initialize(VorselBuilder("key", fuzz::group).push().beacon(true).build());
    application.platform.settle();
  });
}

void use(fuzz::Process& application) {
  const std::array<std::uint8_t, 3> token{1, 2, 3};
  const auto& platform = application.platform;
  const std::function<void()> steps[] = {
      [&] { platform.application->becomeActive(); },
      [&] { platform.application->screenAppears(); },
      [] {
        VorselKellp::track({{"k", 1}});
      },
      [] { VorselKellp::sendTrack([](auto, const auto&, const auto&) {}); },
      [] { VorselKellp::setUtm("source", "mail"); },
      [] { FUZZ_EXPECT(!VorselKellp::isInitialised() || VorselKellp::getUtm("source") == "mail"); },
      [] { VorselKellp::removeTrackFor("k"); },
      [] { VorselKellp::sendCustomEvent("k", 1); },
      [] { VorselKellp::addNotificationCount(nullptr); },
      [] {
        VorselKellp::decreseNotificationCount(std::make_shared<VorselKelp::platform::NotificationContent>());
      },
      [] { VorselKellp::setNotification("come back"); },
      [] { VorselKellp::updateScheduler(); },
      [&] { VorselKellp::registerToken(token); },
      [] { VorselKellp::askForNotificationsPermission(); },
      [&] { platform.location->range({{"00000000-0000-0000-0000-000000000330"}}); },
      [] {
        VorselKellp::pushTrackOpen(true, {request(), "a"}, nullptr);
      },
      [] {
        VorselKellp::pushTrackOpen(false, {request(), "yes"}, nullptr);
      },
      [] { VorselKellp::cancelScheduledNotifications(); },
      [&] { platform.device->advance(2); },
      [&] { platform.application->enterBackground(); },
      [&] { platform.application->terminate(); }};
  for (const auto& step : steps) {
    if (!run(step)) return;
    application.platform.settle();
  }
}

/// What goes out is JSON, whatever was stored.
void checkBodies(const fuzz::Process& application) {
  for (const auto& sent : application.platform.urlSession->requests())
    FUZZ_EXPECT(sent.body.empty() || JSONAny::decode(sent.body));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  static constexpr int statuses[] = {201, 200, 500, 0};
  fuzz::memory::ServerAnswer answer;
  const unsigned choice = input.choice();
  answer.status = statuses[choice & 3U];
  if (answer.status == 0) answer = fuzz::memory::ServerAnswer::failure("down");
  answer.body = "{}";

  const auto device = fuzz::makeDevice();
  fill(*device, input);
  if ((choice & 0x1CU) != 0x1C) oweLess(*device);
  deliver(device, answer);
  {
    fuzz::Process application(device);
    application.platform.urlSession->setRule("*", answer);
    if (!start(application)) return 0;
    use(application);
    checkBodies(application);
  }
  fuzz::Process next(device);
  next.platform.urlSession->setRule("*", answer);
  (void)start(next);
  return 0;
}
