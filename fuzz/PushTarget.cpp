// A push, from its arrival in the service extension to the tap in the application. The lint of the payload
// has to tell beforehand what comes of it, so that each input is a test of the lint as well.

#include <algorithm>
#include <string>
#include <vector>

#include "VorselKelp/PayloadLint.h"
#include "base/Url.h"
#include "support/Expect.h"
#include "support/Input.h"
#include "support/Process.h"
#include "support/Stop.h"

namespace {

using namespace VorselKelp;
using fuzz::memory::MemoryDefaultsDomain;
using platform::DefaultsValue;
using platform::MapKind;

constexpr const char* identifier = "n-1";
constexpr const char* original = "as sent";

/// What the service extension is asked, and what it answers.
struct Delivery {
  explicit Delivery(const std::string& payload) {
    request.identifier = identifier;
    request.content.userInfo = platform::UserInfo::fromJSON(payload);
    best->title = best->body = original;
  }
  ContentHandler handler() {
    return [this](const auto& content) {
      ++handled;
      FUZZ_EXPECT(content == best);
      shown = *content;
    };
  }

  platform::NotificationRequest request;
  std::shared_ptr<platform::NotificationContent> best = std::make_shared<platform::NotificationContent>();
  platform::NotificationContent shown;
  int handled = 0;
};

void checkRequests(const PayloadLint& lint, const fuzz::Process& extension) {
  auto urls = extension.platform.urlSession->urls();
  std::erase_if(urls, [](const std::string& url) { return !isWebUrl(url); });
  // An ad brings a picture along, of which nobody knows beforehand.
  if (lint.shows.ad && urls.size() > lint.requests.size()) urls.resize(lint.requests.size());
  FUZZ_EXPECT(urls == lint.requests);
}

void checkShown(const PayloadLint::Shown& told, const Delivery& delivery) {
  const auto& shown = delivery.shown;
  FUZZ_EXPECT(shown.body == told.body);
  FUZZ_EXPECT(shown.sound == told.sound);
  FUZZ_EXPECT(shown.categoryIdentifier == told.category);
  FUZZ_EXPECT(shown.attachments.size() <= 1);
  if (told.ad) {
    FUZZ_EXPECT(!shown.title.empty());
  } else {
    FUZZ_EXPECT(shown.title == told.title);
    FUZZ_EXPECT(shown.attachments.empty() || told.image);
  }
}

bool isStored(MemoryDefaultsDomain& store, const PayloadLint::Stored& told) {
  const auto slash = told.entry.find('/');
  if (told.key == "vs_url") {
    const auto links = store.mapEntry(told.key, {told.entry.substr(0, slash)}, MapKind::textMapMap);
    const auto* urls = links ? links->as<DefaultsValue::Map>() : nullptr;
    const auto url = urls ? urls->find(told.entry.substr(slash + 1)) : DefaultsValue::Map::const_iterator();
    return urls && url != urls->end() && url->second == DefaultsValue{told.text};
  }
  if (told.key == "vs_t" || told.key == "vs_tags") {
    const auto list = store.mapEntry(told.key, {told.entry}, MapKind::listMap);
    return list && std::ranges::count(*list->as<platform::TextList>(), told.text) > 0;
  }
  const auto value = store.object(told.key);
  if (!value) return false;
  if (const auto* list = value->as<platform::TextList>()) return list->back() == told.text;
  if (const auto* flag = value->as<bool>()) return *flag == (told.text == "true");
  return *value == DefaultsValue{told.text};
}

/// The whole way in the extension; false when it stopped there.
bool deliver(const PayloadLint& lint, fuzz::Process& extension, Delivery& delivery, bool late) {
  const auto stop = fuzz::stopOf([&] {
    FUZZ_EXPECT(!VorselKellp::didReceiveNotification(delivery.request, delivery.best, delivery.handler()));
  });
  FUZZ_EXPECT(stop.has_value() == (lint.root != PayloadLint::Root::push));
  if (stop) {
    FUZZ_EXPECT(delivery.handled == 0 && delivery.best->title == original);
    return false;
  }
  if (!late) extension.platform.settle();
  FUZZ_EXPECT(delivery.handled <= 1);
  // The system's patience ends where nothing was handed over yet.
  if (delivery.handled == 0)
    VorselKellp::notificationBuilderWillTerminate(delivery.request.content.userInfo, delivery.best,
                                                  delivery.handler());
  extension.platform.settle();
  FUZZ_EXPECT(delivery.handled == 1);
  FUZZ_EXPECT(delivery.best->title == delivery.shown.title);
  FUZZ_EXPECT(delivery.best->attachments == delivery.shown.attachments);
  return true;
}

void checkAsTold(const PayloadLint& lint, const fuzz::Process& extension, const Delivery& delivery) {
  checkRequests(lint, extension);
  checkShown(lint.shows, delivery);
  auto& store = fuzz::storeOf(*extension.platform.device);
  for (const auto& told : lint.stored) FUZZ_EXPECT(isStored(store, told));
}

/// The tap on the notification or on a button, twice: the first time takes all that was stored for it.
void open(const std::shared_ptr<fuzz::memory::MemoryDevice>& device, const Delivery& delivery,
          const std::string& action) {
  fuzz::Process application(device);
  auto& store = fuzz::storeOf(*device);
  int answers = 0;
  for (const bool handle : {false, true}) {
    VorselKellp::pushTrackOpen(handle, {delivery.request, action}, [&](const auto&) { ++answers; });
    application.platform.settle();
    FUZZ_EXPECT(answers <= 1);
    FUZZ_EXPECT(!store.mapEntry("vs_t", {identifier}, MapKind::listMap));
    FUZZ_EXPECT(!store.mapEntry("vs_url", {identifier}, MapKind::textMapMap));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const unsigned choice = input.choice();
  const std::string payload = input.untilNul();
  fuzz::memory::ServerAnswer ad;
  ad.body = input.untilNul();
  const std::string action = input.empty() ? std::string(platform::defaultActionIdentifier) : input.all();

  const auto device = fuzz::makeDevice();
  fuzz::storeOf(*device).setObject("vs_push", {true});
  Delivery delivery(payload);
  const auto lint = lintPayload(payload, identifier, *delivery.best);
  if (lint.silent) return 0;  // it never comes to an extension, and nobody can open it
  {
    fuzz::Process extension(device, fuzz::memory::ProcessKind::extension, "com.example.app.service");
    extension.platform.urlSession->setRule("*", fuzz::pictureAnswer(choice));
    extension.platform.urlSession->setRule("/ad", ad);
    const bool late = (choice & 8U) != 0;
    if (!deliver(lint, extension, delivery, late)) return 0;
    if (!late && lint.prepared) checkAsTold(lint, extension, delivery);
  }
  open(device, delivery, action);
  return 0;
}
