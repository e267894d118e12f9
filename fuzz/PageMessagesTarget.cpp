// What the permission page posts: the first message ends the page, and only an agreement leads to the
// system's dialog.

#include <algorithm>

#include "base/Text.h"
#include "core/CoreContext.h"
#include "prompt/CustomPromtEvent.h"
#include "prompt/MessageText.h"
#include "prompt/PromptPage.h"
#include "support/Expect.h"
#include "support/Input.h"
#include "support/Process.h"
#include "support/Stop.h"

namespace {

using namespace VorselKelp;

/// A value as a page posts it: JSON where it is some, else a text.
JSONAny posted(const std::string& text, bool asText) {
  auto any = JSONAny::decode(text);
  return any && !asText ? *std::move(any) : JSONAny(text);
}

void checkText(const JSONAny& body) {
  for (const std::size_t limit : {std::size_t{16}, CustomPromtEvent::textLimit}) {
    const auto text = messageText(body, limit);
    if (body.as<std::string>()) {
      FUZZ_EXPECT(text == *body.as<std::string>());
    } else {
      // Beyond the limit there are the last key and text, and the ends of what is open.
      FUZZ_EXPECT(text.size() <= 3 * limit + 64 * 300);
    }
  }
}

void checkEvent(const std::string& text) {
  const auto event = CustomPromtEvent::decode(text);
  if (!event) return;
  const auto line = event->description();
  FUZZ_EXPECT(line.size() < 2000 && isValidUtf8(line));
  FUZZ_EXPECT(std::ranges::none_of(line, [](char c) { return static_cast<unsigned char>(c) < 0x20; }));
  FUZZ_EXPECT(!event->agrees() || event->event);
}

bool agrees(const JSONAny& body) {
  const auto event = CustomPromtEvent::decode(messageText(body, CustomPromtEvent::textLimit));
  return event && event->agrees();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const unsigned choice = input.choice();
  const std::string text = input.untilNul();
  const JSONAny body = posted(text, (choice & 1U) != 0);
  const JSONAny second = posted(input.all(), (choice & 2U) != 0);
  checkText(body);
  checkEvent(text);

  const auto device = fuzz::makeDevice();
  fuzz::Process application(device);
  const auto root = std::make_shared<ui::ViewController>();
  application.platform.presenter->setRootViewController(root);
  CoreContext::current("a fuzzer")->state.customPrompt = true;
  VorselKellp::askForNotificationPermissionWith(root);
  application.platform.settle();
  const auto page = application.platform.webViews->last();
  FUZZ_EXPECT(page && root->presentedViewController());

  FUZZ_EXPECT(page->post(consoleBridge, second));
  FUZZ_EXPECT(root->presentedViewController());
  FUZZ_EXPECT(page->post(answerBridge, body));
  page->post(answerBridge, second);
  application.platform.settle();
  FUZZ_EXPECT(!root->presentedViewController());
  FUZZ_EXPECT(application.platform.presenter->dismissals().size() == 1);
  const auto requests = device->notificationCenter->authorizationRequests().size();
  FUZZ_EXPECT(requests == (agrees(body) ? 1U : 0U));
  FUZZ_EXPECT(application.platform.console->texts().size() <= 1);
  return 0;
}
