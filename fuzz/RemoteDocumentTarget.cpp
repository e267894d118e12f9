// The remote configuration: whatever the server answers, the core starts or stays down, stores what can be
// stored, and makes a permission page that no text of the document can break out of.

#include <algorithm>
#include <string_view>

#include "VorselKelp/VorselBuilder.h"
#include "base/Text.h"
#include "support/Expect.h"
#include "support/Input.h"
#include "support/Process.h"
#include "support/Stop.h"

namespace {

using namespace VorselKelp;

constexpr const char* configurationPath = "/tag/key.json";

int occurrences(std::string_view text, std::string_view what) {
  int count = 0;
  for (auto at = text.find(what); at != text.npos; at = text.find(what, at + 1)) ++count;
  return count;
}

void checkStored(fuzz::memory::MemoryDefaultsDomain& store, const std::string& document) {
  const auto stored = store.object("vs_autoconf");
  if (stored) {
    const auto* text = stored->as<std::string>();
    FUZZ_EXPECT(text && isValidUtf8(*text) && text->find('\\') == std::string::npos);
    FUZZ_EXPECT(*text == withoutBackslashes(withoutByteOrderMark(document)));
  }
  for (const char* key : {"vs_activity_url", "vs_user_url", "vs_config_url"}) {
    const auto url = store.object(key);
    FUZZ_EXPECT(url && url->as<std::string>() && isValidUtf8(*url->as<std::string>()));
  }
  for (const char* key : {"vs_analytics", "vs_push"}) {
    const auto flag = store.object(key);
    FUZZ_EXPECT(!flag || flag->as<bool>());
  }
}

/// The page has the two scripts that it was written with, and no third.
void checkPage(const fuzz::Process& application) {
  const auto page = application.platform.webViews->last();
  if (!page) return;
  FUZZ_EXPECT(page->loads().size() == 1);
  const auto& html = page->loads().front().html;
  FUZZ_EXPECT(occurrences(html, "<script") == 2 && occurrences(html, "</script") == 2);
  FUZZ_EXPECT(occurrences(html, "<!--") == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  static constexpr int statuses[] = {200, 201, 204, 299, 300, 304, 404, 503};
  const unsigned choice = input.choice();
  fuzz::memory::ServerAnswer answer;
  answer.status = statuses[choice & 7U];
  answer.body = input.all();

  const auto device = fuzz::makeDevice();
  fuzz::Process application(device);
  const auto root = std::make_shared<ui::ViewController>();
  application.platform.presenter->setRootViewController(root);
  VorselKellp::initialize(VorselBuilder("key", fuzz::group).build());
  application.platform.urlSession->setRule(configurationPath, answer);
  application.platform.settle();
  const bool document = answer.status != 204 && answer.status != 304;
  FUZZ_EXPECT(VorselKellp::isInitialised() == (document || answer.status > 299));
  checkStored(fuzz::storeOf(*device), answer.body);

  VorselKellp::askForNotificationPermissionWith(root);
  application.platform.settle();
  checkPage(application);
  // A page of the publisher's stands in for the system's dialog, never beside it.
  const bool asked = !device->notificationCenter->authorizationRequests().empty();
  const bool refused = std::ranges::any_of(application.platform.console->texts(), [](const auto& line) {
    return line.starts_with("The permission page is not shown: ");
  });
  FUZZ_EXPECT(asked + (root->presentedViewController() != nullptr) + refused == 1);
  application.platform.urlSession->cancelAll();
  return 0;
}
