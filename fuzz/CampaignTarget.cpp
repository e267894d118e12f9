// A campaign in the content extension: its carousel is made, shown, paged through and opened. What the lint
// of the payload finds nothing against has to go through.

#include <algorithm>
#include <set>

#include "VorselKelp/PayloadLint.h"
#include "VorselKelp/VorselNotificationView.h"
#include "base/Url.h"
#include "support/Expect.h"
#include "support/Input.h"
#include "support/Process.h"
#include "support/Stop.h"

namespace {

using namespace VorselKelp;

struct Controller final : ui::ViewController, platform::NotificationContentExtension {
  void didReceive(const platform::DeliveredNotification&) override {}
  std::shared_ptr<platform::ExtensionContext> extensionContext() override { return context; }

  std::shared_ptr<fuzz::memory::RecordingExtensionContext> context =
      std::make_shared<fuzz::memory::RecordingExtensionContext>();
};

/// Whether the carousel stops, when every page is shown and opened.
bool stopsCarousel(const PayloadLint& lint) {
  using When = PayloadLint::Stop::When;
  return !lint.carousel ||
         std::ranges::any_of(lint.stops, [](const auto& stop) { return stop.when != When::preparing; });
}

void checkView(const VorselNotificationView& view) {
  const auto& messages = *view.notifications()->p;
  const auto count = static_cast<std::int64_t>(messages.size());
  FUZZ_EXPECT(view.position() >= 0 && view.position() < count);
  const P& message = messages[static_cast<std::size_t>(view.position())];
  FUZZ_EXPECT(view.presentedNotification() == message);
  FUZZ_EXPECT(view.titleLabel->text.get() == message.t);
  FUZZ_EXPECT(view.subtitleLabel->text.get() == message.o.body);
  const std::set<std::int64_t> covered(view.positionsCovered().begin(), view.positionsCovered().end());
  FUZZ_EXPECT(covered.size() == view.positionsCovered().size());
  FUZZ_EXPECT(covered.contains(view.position()) && *covered.rbegin() < count);
  for (const auto* label : {view.titleLabel.get(), view.subtitleLabel.get()}) {
    const auto& color = label->textColor.get();
    for (const double part : {color.red, color.green, color.blue, color.alpha})
      FUZZ_EXPECT(part >= 0 && part <= 1);
  }
}

/// What goes out for a page's sake: the impression trackers of every message but the first, once.
std::size_t impressionsOf(const MultiMessagePush& push) {
  std::size_t count = 0;
  for (std::size_t i = 1; i < push.p->size(); ++i) {
    const auto& trackers = (*push.p)[i].i;
    if (trackers) count += static_cast<std::size_t>(std::ranges::count_if(*trackers, isWebUrl));
  }
  return count;
}

void act(VorselNotificationView& view, unsigned what) {
  platform::NotificationResponse response;
  switch (what % 6) {
    case 0:
      return view.rightButtonTapped();
    case 1:
      return view.leftButtonTapped();
    case 2:
      return view.performLayout();
    case 3:
      response.actionIdentifier = "next";
      break;
    case 4:
      response.actionIdentifier = "prev";
      break;
    default:
      response.actionIdentifier = "other";
  }
  view.handleNotificationAction(response);
}

struct Show {
  fuzz::Process& extension;
  const std::shared_ptr<Controller>& controller;
  std::string actions;

  void run(const platform::DeliveredNotification& notification) const {
    const auto view = VorselNotificationView::make(notification, controller);
    FUZZ_EXPECT(controller->view()->subviews().size() == 1);
    view->performLayout();
    checkView(*view);
    for (const char action : actions) {
      act(*view, static_cast<unsigned char>(action));
      if ((action & 0x40) != 0) extension.platform.settle();
      checkView(*view);
    }
    extension.platform.settle();
    checkTraffic(*view);
    for (std::size_t i = 0; i < view->notifications()->p->size(); ++i) {
      view->conversionTapped();
      view->rightButtonTapped();
    }
    FUZZ_EXPECT(controller->context->opened.size() <= view->notifications()->p->size());
    extension.platform.settle();
  }

  void checkTraffic(const VorselNotificationView& view) const {
    std::size_t dropped = 0;
    for (const auto& request : extension.platform.urlSession->requests()) dropped += request.discardBody;
    FUZZ_EXPECT(dropped <= impressionsOf(*view.notifications()));
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const unsigned choice = input.choice();
  const std::string payload = input.untilNul();
  const std::string actions = input.empty() ? "012345@ABCDE" : input.all().substr(0, 64);

  const auto device = fuzz::makeDevice();
  device->addGroup("group.com.example.app.content.vorselKellp");
  if ((choice & 8U) != 0) {
    auto values = device->hardware->values();
    values.systemVersion = "10.3";
    device->hardware->set(values);
  }
  fuzz::Process extension(device, fuzz::memory::ProcessKind::extension, "com.example.app.content");
  extension.platform.bundle->setResource("left2.png", fuzz::memory::pngBeginning(8, 8));
  extension.platform.urlSession->setRule("*", fuzz::pictureAnswer(choice));
  const auto controller = std::make_shared<Controller>();
  controller->view()->frame = {{0, 0}, {320, 240}};
  platform::DeliveredNotification notification;
  notification.request.identifier = "n-1";
  notification.request.content.userInfo = platform::UserInfo::fromJSON(payload);

  const auto lint = lintPayload(payload, "n-1");
  if (lint.silent) return 0;  // no notification comes of it
  const auto stop = fuzz::stopOf([&] { Show{extension, controller, actions}.run(notification); });
  FUZZ_EXPECT(stop.has_value() == stopsCarousel(lint));
  const auto unsized = fuzz::stopOf([&] {
    const auto area = VorselKellp::getPreferedContentSize(notification);
    FUZZ_EXPECT(area.width > 0 && area.height > 0);
  });
  FUZZ_EXPECT(!unsized || lint.root == PayloadLint::Root::campaign);
  return 0;
}
