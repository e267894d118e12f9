// What lint foretells of random payloads against what extensions and application then do.

#include <gtest/gtest.h>

#include <algorithm>

#include "VorselKelp/PayloadLint.h"
#include "VorselKelp/VorselNotificationView.h"
#include "base/Url.h"
#include "content_ext/CarouselTest.h"
#include "lint/RandomPayload.h"
#include "support/Process.h"
#include "support/Stop.h"

namespace VorselKelp::lint_tests {
namespace {

using platform::DefaultsValue;
using Texts = std::vector<std::string>;
using When = PayloadLint::Stop::When;

constexpr const char* identifier = "n-1";
constexpr const char* adTitle = "The ad's";
/// An ad that a tap on a page of its carousel follows up: chance hardly ever puts the two together.
constexpr const char* adWithPages =
    R"({"aps":{"mutable-content":1,"alert":{"title":"T","adex":true,"e":"https://a.example/ad?x=1"}},)"
    R"("isMultiple":true,"p":[{"o":{"image":"https://a.example/1.png",)"
    R"("data":{"url":"myapp://item","t":["https://a.example/c"]}}}]})";

/// As the system would have made it of "aps", and told apart from all that a payload brings.
platform::NotificationContent original() {
  platform::NotificationContent content;
  content.title = "title as sent";
  content.subtitle = "subtitle as sent";
  content.body = "body as sent";
  content.badge = 7;
  content.sound = platform::NotificationSound::named("sound as sent");
  content.categoryIdentifier = "category as sent";
  return content;
}

platform::NotificationRequest requestOf(const std::string& payload) {
  platform::NotificationRequest request{identifier, original(), std::nullopt};
  request.content.userInfo = platform::UserInfo::fromJSON(payload);
  return request;
}

/// What reached the network.
Texts sent(const fuzz::Process& process) {
  auto urls = process.platform.urlSession->urls();
  std::erase_if(urls, [](const std::string& url) { return !isWebUrl(url); });
  return urls;
}

void answerAll(const fuzz::Process& process) {
  process.platform.urlSession->setRule("*", fuzz::pictureAnswer(0));
  process.platform.urlSession->setRule("/ad", status(200, R"({"items":[{"md":{"title":"The ad's"}}]})"));
}

bool stops(const PayloadLint& lint, When when, std::size_t page = 0) {
  return std::ranges::any_of(lint.stops, [&](const auto& stop) {
    return stop.when == when && (when < When::pageShown || stop.page == page);
  });
}

struct LinkDelegate final : VorselKellpDelegate {
  void handleURL(const std::string& url) override { links.push_back(url); }
  Texts links;
};

class Road {
 public:
  Road(std::string payload, const PayloadLint& lint) : payload_(std::move(payload)), lint_(lint) {
    device_->addGroup("group.com.example.app.content.vorselKellp");
    fuzz::storeOf(*device_).setObject("vs_push", {true});
  }

  /// A silent push goes to the application alone.
  void wake() {
    const fuzz::Process application(device_);
    std::optional<Geofences> geofences;
    std::optional<Beacons> beacons;
    VorselKellp::didReciveAdministrativeNotificationWith(platform::UserInfo::fromJSON(payload_),
                                                         [&](const auto& gl, const auto& bl) {
                                                           geofences = gl;
                                                           beacons = bl;
                                                         });
    const auto records = [](const auto& lists) {
      return std::pair(lists.first ? std::optional(lists.first->gl) : std::nullopt,
                       lists.second ? std::optional(lists.second->bl) : std::nullopt);
    };
    EXPECT_EQ(records(std::pair(geofences, beacons)),
              records(std::pair(lint_.silent->geofences, lint_.silent->beacons)));
    EXPECT_TRUE(lint_.errors.empty() && lint_.stops.empty() && lint_.taps.empty() && !lint_.carousel);
  }

  /// Has the notification prepared, if the system would; the store is what it leaves.
  void deliver() {
    if (!lint_.prepared) return;
    fuzz::Process extension(device_, fuzz::memory::ProcessKind::extension, "com.example.app.service");
    answerAll(extension);
    const auto request = requestOf(payload_);
    auto best = std::make_shared<platform::NotificationContent>(request.content);
    int handled = 0;
    const auto stop = fuzz::stopOf([&] {
      const auto handler = [&](const auto&) { ++handled; };
      (void)VorselKellp::didReceiveNotification(request, best, handler);
      extension.platform.settle();
      if (handled == 0)
        VorselKellp::notificationBuilderWillTerminate(request.content.userInfo, best, handler);
    });
    EXPECT_EQ(stop.has_value(), stops(lint_, When::preparing)) << stop.value_or("");
    EXPECT_EQ(handled, stop ? 0 : 1);
    EXPECT_EQ(sent(extension), lint_.requests);
    compareShown(*best);
    compareStored();
  }

  void tap(const PayloadLint::Tap& told) {
    fuzz::Process application(device_);
    answerAll(application);
    const auto delegate = std::make_shared<LinkDelegate>();
    VorselKellp::setVorselDelegate(delegate);
    VorselKellp::pushTrackOpen(true, {requestOf(payload_), told.action}, [](const auto&) {});
    application.platform.settle();
    using Opens = PayloadLint::Tap::Opens;
    EXPECT_EQ(application.platform.browser->pages(),
              told.opens == Opens::browser ? Texts{told.url} : Texts{});
    EXPECT_EQ(delegate->links, told.opens == Opens::deepLink ? Texts{told.url} : Texts{});
    EXPECT_EQ(sent(application), told.requests);
  }

  /// Pages to `index` and taps there, unless it stops before.
  void show(std::size_t index) {
    fuzz::Process extension(device_, fuzz::memory::ProcessKind::extension, "com.example.app.content");
    answerAll(extension);
    const auto controller = std::make_shared<ContentController>();
    std::shared_ptr<VorselNotificationView> view;
    const auto opening = fuzz::stopOf([&] {
      view = VorselNotificationView::make({requestOf(payload_), {}}, controller);
      extension.platform.settle();
    });
    EXPECT_EQ(opening.has_value(), !lint_.carousel) << opening.value_or("");
    if (opening || !lint_.carousel) return;
    EXPECT_EQ(view->leftButton->hidden, !lint_.carousel->arrows);
    Texts expected = lint_.carousel->arrowRequests;
    expected.insert(expected.end(), lint_.carousel->requests.begin(), lint_.carousel->requests.end());
    for (std::size_t page = 0; page <= index; ++page) {
      const auto stop = fuzz::stopOf([&] { page == 0 ? view->performLayout() : view->rightButtonTapped(); });
      EXPECT_EQ(stop.has_value(), stops(lint_, When::pageShown, page)) << stop.value_or("");
      if (stop) return;
      comparePage(*view, page);
      std::ranges::copy(lint_.carousel->pages[page].requests, std::back_inserter(expected));
    }
    compareTap(*view, index, *controller);
    std::ranges::copy(lint_.carousel->pages[index].tap.requests, std::back_inserter(expected));
    EXPECT_EQ(sent(extension), expected);
  }

 private:
  void compareShown(const platform::NotificationContent& content) const {
    const auto& told = lint_.shows;
    const bool adCame = content.title == adTitle;
    EXPECT_EQ(content.title, adCame && told.ad ? adTitle : told.title);
    EXPECT_EQ(content.subtitle, told.subtitle);
    EXPECT_EQ(content.body, told.body);
    EXPECT_EQ(content.badge, told.badge);
    EXPECT_EQ(content.sound, told.sound);
    EXPECT_EQ(content.categoryIdentifier, told.category);
    std::vector<platform::NotificationAction> buttons;
    for (const auto& category : device_->notificationCenter->categories()) buttons = category.actions;
    EXPECT_EQ(buttons, told.actions);
    EXPECT_TRUE(content.attachments.size() <= 1 && (content.attachments.empty() || told.image));
  }

  void compareStored() const {
    DefaultsValue::Map told;
    for (const auto& [key, entry, text] : lint_.stored) {
      const auto slash = entry.find('/');
      if (key == "vs_url") {
        auto& link = inMap(inMap(told[key], entry.substr(0, slash)), entry.substr(slash + 1));
        EXPECT_FALSE(link.as<std::string>()) << entry << " is told twice";
        link = {text};
      } else if (key == "vs_t" || key == "vs_tags") {
        appendTo(inMap(told[key], entry), text);
      } else if (key == "vs_category") {
        appendTo(told[key], text);
      } else if (key == "vs_adex") {
        told[key] = {text == "true"};
      } else {
        told[key] = {text};
      }
    }
    auto held = fuzz::storeOf(*device_).contents();
    held.erase("vs_push");
    // A target without trackers leaves an empty list of them, of which there is nothing to tell.
    if (!told.contains("vs_t")) held.erase("vs_t");
    EXPECT_EQ(held, told);
  }
  static DefaultsValue& inMap(DefaultsValue& map, const std::string& key) {
    if (!map.as<DefaultsValue::Map>()) map = {DefaultsValue::Map{}};
    return std::get<DefaultsValue::Map>(map.value)[key];
  }
  static void appendTo(DefaultsValue& list, const std::string& text) {
    if (!list.as<platform::TextList>()) list = {platform::TextList{}};
    std::get<platform::TextList>(list.value).push_back(text);
  }

  void comparePage(const VorselNotificationView& view, std::size_t page) const {
    const auto& told = lint_.carousel->pages[page];
    EXPECT_EQ(view.position(), static_cast<std::int64_t>(page));
    EXPECT_EQ(view.titleLabel->text.get(), told.title);
    EXPECT_EQ(view.subtitleLabel->text.get(), told.text);
  }

  void compareTap(VorselNotificationView& view, std::size_t page, const ContentController& controller) const {
    const auto& told = lint_.carousel->pages[page].tap;
    const auto stop = fuzz::stopOf([&] { view.conversionTapped(); });
    EXPECT_EQ(stop.has_value(), stops(lint_, When::pageTapped, page)) << stop.value_or("");
    const bool opens = told.opens == PayloadLint::Tap::Opens::system;
    EXPECT_EQ(controller.context->opened, opens ? Texts{told.url} : Texts{});
  }

  const std::string payload_;
  const PayloadLint& lint_;
  const std::shared_ptr<fuzz::memory::MemoryDevice> device_ = fuzz::makeDevice();
};

TEST(LintProperty, ComesTrueOnTheWholeRoad) {
  RandomPayload payloads(1);
  std::size_t silent = 0, prepared = 0, carousels = 0, taps = 0, stopped = 0;
  for (int i = 0; i < 3000 && !testing::Test::HasFailure(); ++i) {
    const auto payload = i == 0 ? adWithPages : payloads.next();
    SCOPED_TRACE(payload);
    const auto lint = lintPayload(payload, identifier, original());
    if (lint.silent) {
      Road(payload, lint).wake();
      ++silent;
      continue;
    }
    prepared += lint.prepared && lint.stops.empty();
    carousels += lint.carousel.has_value();
    stopped += !lint.stops.empty();
    EXPECT_EQ(lint.taps.size(), lint.shows.actions.size() + 1);
    // A tap takes what is stored: each of them needs a delivery of its own.
    for (const auto& tap : lint.taps) {
      Road road(payload, lint);
      road.deliver();
      road.tap(tap);
      taps += tap.opens != PayloadLint::Tap::Opens::nothing;
    }
    // A carousel leaves its arrows' pictures for the next one.
    const std::size_t pages = lint.carousel ? lint.carousel->pages.size() : 1;
    for (std::size_t page = 0; page < pages; ++page) {
      Road road(payload, lint);
      road.deliver();
      road.show(page);
    }
  }
  // Else the payloads would be too odd for anything to happen.
  EXPECT_GT(silent, 100u);
  EXPECT_GT(prepared, 100u);
  EXPECT_GT(carousels, 100u);
  EXPECT_GT(taps, 100u);
  EXPECT_GT(stopped, 100u);
}

}  // namespace
}  // namespace VorselKelp::lint_tests
