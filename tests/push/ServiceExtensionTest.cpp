#include <algorithm>
#include <future>
#include <iostream>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "kellp/Kellp.h"
#include "push/ServiceTest.h"

namespace VorselKelp {
namespace {

using platform::DefaultsValue;
using platform::NotificationSound;
using platform::TextList;
using testing::ElementsAre;
using testing::IsEmpty;
using testing_platform::pngBeginning;
using testing_platform::ServerAnswer;
using Map = DefaultsValue::Map;

constexpr const char* tapAction = "com.apple.UNNotificationDefaultActionIdentifier";

DefaultsValue asText(const char* value) {
  return {std::string(value)};
}

TEST_F(ServiceTest, ATextMessage) {
  const std::string json = message(
      R"(,"n":{"body":"B","actions":[{"action":"yes","title":"Yes","url":"https://y/${VA_BACID}?${VA_BACID}"},)"
      R"({"action":"x","title":"NO"}],"data":{"url":"https://o/${VA_BACID}","t":["https://c/1","https://c/2"]}},)"
      R"("v":"https://v/1","t":["https://i/1"," no url","file:///etc/passwd","https://i/2"])");
  const auto best = deliver(json);
  ASSERT_THAT(handled_, ElementsAre(best));
  EXPECT_EQ(best->title, "T");
  EXPECT_EQ(best->body, "B");
  EXPECT_EQ(best->sound, NotificationSound::defaultSound());
  EXPECT_THAT(best->attachments, IsEmpty());
  EXPECT_THAT(best->categoryIdentifier, testing::MatchesRegex("Vorsel_categ_-?[0-9]+"));
  EXPECT_THAT(service_.urlSession->urls(), ElementsAre("https://v/1", "https://i/1", "https://i/2"));
  for (const auto& sent : service_.urlSession->requests()) EXPECT_EQ(sent.method + sent.body, "GET");
  EXPECT_EQ(store().object("vs_t"), DefaultsValue{(Map{{"n-1", {TextList{"https://c/1", "https://c/2"}}}})});
  EXPECT_EQ(store().object("vs_url"),
            DefaultsValue{(Map{
                {"n-1", {Map{{tapAction, asText("https://o/0")}, {"yes", asText("https://y/yes?yes")}}}}})});
  EXPECT_EQ(service_.console->count(json), 1u) << "the message as one line";
  EXPECT_EQ(service_.console->count("conv"), 1u);
  service_.settle();
  EXPECT_EQ(handled_.size(), 1u);
}

TEST_F(ServiceTest, SoundsAndWhatStaysAsSent) {
  struct Case {
    const char* n;
    std::optional<NotificationSound> sound;
  };
  const Case cases[] = {
      {"{}", NotificationSound::defaultSound()},
      {R"({"sound":"ping"})", NotificationSound::named("ping.wav")},
      {R"({"sound":"","silent":false})", NotificationSound::named(".wav")},
      {R"({"sound":"ping","silent":true})", std::nullopt},
      {R"({"silent":true,"cl":1})", std::nullopt},
      {R"({"sound":"ping","cl":-1})", NotificationSound::named("ping.wav")},
  };
  for (const auto& c : cases) {
    const auto best = deliver(message(std::string(",\"n\":") + c.n));
    EXPECT_EQ(best->sound, c.sound) << c.n;
    EXPECT_EQ(best->body, "as sent") << c.n;
  }
  EXPECT_EQ(handled_.size(), std::size(cases));
  EXPECT_FALSE(store().object("vs_url"));
  EXPECT_FALSE(store().object("vs_t"));
}

TEST_F(ServiceTest, ClSwitchesCategoryAndImageOff) {
  const std::string rest =
      R"("image":"https://i/p.png","body":"B","actions":[{"action":"a","title":"A","url":"https://a"}],)"
      R"("data":{"url":"https://o"}},"t":["https://i/1"])";
  const auto best = deliver(message(R"(,"n":{"cl":1,)" + rest));
  EXPECT_EQ(handled_.size(), 1u);
  EXPECT_EQ(best->title + best->body + best->categoryIdentifier, "TB");
  EXPECT_THAT(service_.urlSession->urls(), ElementsAre("https://i/1"));
  EXPECT_THAT(device_->notificationCenter->categories(), IsEmpty());
  EXPECT_EQ(store().object("vs_url"), DefaultsValue{(Map{{"n-1", {Map{{tapAction, asText("https://o")}}}}})});
  EXPECT_EQ(store().object("vs_t"), DefaultsValue{(Map{{"n-1", {TextList{}}}})});
  const auto shown = deliver(message(R"(,"n":{"cl":0,)" + rest), "n-2");
  EXPECT_FALSE(shown->categoryIdentifier.empty());
  EXPECT_EQ(service_.urlSession->urls().back(), "https://i/p.png");
  EXPECT_EQ(handled_.size(), 1u) << "the image is still on its way";
}

TEST_F(ServiceTest, TitlesAreReReadAndHostileOnesSurvive) {
  const std::string megabyte(1 << 20, 'x');
  const std::pair<std::string, std::string> cases[] = {{"Caf\\\\u00e9", "Caf\u00e9"},
                                                       {"\\\\ud83d\\\\ude00", "\U0001F600"},
                                                       {"caf\\\\351", "caf\u00e9"},
                                                       {"Caf\u00e9 \\\\u00e9", "Caf\u00e9 \\u00e9"},
                                                       {"broken \\\\u12", "broken \\u12"},
                                                       {"a\\u0000b", std::string("a\0b", 3)},
                                                       {"", ""},
                                                       {megabyte, megabyte},
                                                       {"100% %d %s %n", "100% %d %s %n"}};
  for (const auto& [sent, shown] : cases) {
    const auto best = deliver(R"({"aps":{"alert":{"title":")" + sent + R"(","n":{}}}})");
    EXPECT_EQ(best->title, shown) << sent.substr(0, 40);
  }
}

TEST_F(ServiceTest, WhatIsNoSingleMessageStopsTheProcessWithItsLines) {
  struct ErrorStream final : platform::Console {
    void print(std::string_view text) override { std::cerr << text << '\n'; }
  };
  service_.platform()->console = std::make_shared<ErrorStream>();
  const std::string unreadable = "JSON serialization failed\n", noMessage = "PUSH OBJECT FAILED\n",
                    neither = noMessage + "PUSH PCampaignObj OBJECT FAILED\n";
  const std::pair<std::string, std::string> cases[] = {
      {R"({"p":[{"o":{"body":"1"}}]})", noMessage},
      {R"({"aps":{"alert":"Hello"}})", neither},
      {"{}", neither},
      {"[]", unreadable},
      {"", unreadable},
      {"not json", unreadable},
      {message(R"(,"n":{"actions":[{"action":"a"}]})"), neither},
      {message(",\"n\":{\"body\":\"\xff\"}"), unreadable},
      {std::string(10000, '[') + std::string(10000, ']'), unreadable},
      {message(R"(,"n":{"el":123456789012345678901234567890})"), neither}};
  for (const auto& [payload, lines] : cases)
    EXPECT_DEATH(deliver(payload), testing::StartsWith(lines + "Fatal error: ")) << payload.substr(0, 60);
}

TEST_F(ServiceTest, TheLastWordIsSpokenWithPushOnAlone) {
  const auto best = std::make_shared<platform::NotificationContent>();
  int calls = 0;
  const auto terminate = [&] {
    VorselKellp::notificationBuilderWillTerminate({}, best, [&](auto content) {
      ++calls;
      EXPECT_EQ(content, best);
    });
  };
  terminate();
  store().setObject("vs_push", {false});
  terminate();
  EXPECT_EQ(calls, 0);
  store().setObject("vs_push", {true});
  terminate();
  EXPECT_EQ(calls, 1);
  testing_platform::MemoryPlatform storeless(device_, testing_platform::ProcessKind::extension, "storeless");
  device_->groupStores->refuse("");
  VorselKellp::install(storeless.platform());
  terminate();
  EXPECT_EQ(calls, 1);
}

TEST_F(ServiceTest, WhatWasHandedOverAtTheTimeLimitIsNotHandedOverAgain) {
  for (const bool push : {true, false}) {
    store().setObject("vs_push", {push});
    const auto best = deliver(message(R"(,"n":{"body":"B","image":"https://i/x"})"));
    VorselKellp::notificationBuilderWillTerminate({}, best,
                                                  [this](auto content) { handled_.push_back(content); });
    EXPECT_EQ(handled_.size(), push ? 1u : 0u);
    service_.urlSession->setRule("/x", status(200, pngBeginning(1, 1)));
    service_.settle();
    EXPECT_THAT(handled_, ElementsAre(best)) << (push ? "at the limit" : "when its image came");
    EXPECT_EQ(attachmentFiles(), push ? 0u : 1u);
    handled_.clear();
  }
}

TEST_F(ServiceTest, NothingLateTouchesAnyOfSeveralThatWereHandedOver) {
  store().setObject("vs_push", {true});
  service_.urlSession->setRule("/ad&ver=2.0.0", status(200, R"({"items":[{"md":{"title":"Ad"}}]})"));
  service_.urlSession->setRule("*", status(200, pngBeginning(1, 1)));
  const auto message1 = deliver(message(R"(,"n":{"image":"https://i/1"},"t":["https://t/"])"), "n-1");
  const auto ad = deliver(message(R"(,"e":"https://e/ad")"), "n-2");
  const auto message2 = deliver(message(R"(,"n":{"image":"https://i/2"},"t":["https://t/"])"), "n-3");
  for (const auto& best : {message1, ad})
    VorselKellp::notificationBuilderWillTerminate({}, best, [this](auto late) { handled_.push_back(late); });
  service_.settle();
  EXPECT_THAT(handled_, ElementsAre(message1, ad, message2));
  EXPECT_EQ(message1->attachments.size() + ad->attachments.size(), 0u);
  EXPECT_EQ(ad->title, "as sent");
  EXPECT_EQ(message2->attachments.size(), 1u);
  EXPECT_EQ(std::ranges::count(service_.urlSession->urls(), "https://t/"), 1);
}

TEST_F(ServiceTest, AStalledPictureCostsThePictureAlone) {
  const auto best = deliver(message(
      R"(,"n":{"body":"B","image":"https://i/x","tag":"news","data":{"url":"https://o","t":["https://c"]},)"
      R"("actions":[{"action":"a","title":"A","url":"https://a"}]},"t":["https://t/"])"));
  EXPECT_THAT(service_.urlSession->urls(), ElementsAre("https://i/x"));
  EXPECT_EQ(best->title + best->body, "TB");
  EXPECT_EQ(store().object("vs_t"), DefaultsValue{(Map{{"n-1", {TextList{"https://c"}}}})});
  EXPECT_EQ(store().object("vs_url"),
            DefaultsValue{(Map{{"n-1",
                                {Map{{std::string(platform::defaultActionIdentifier), asText("https://o")},
                                     {"a", asText("https://a")}}}}})});
  EXPECT_FALSE(store().object("vs_tags")) << "the notification it replaces is still seen";
  EXPECT_EQ(service_.console->count("conv"), 1u);
  service_.urlSession->setRule("/x", ServerAnswer::failure("down"));
  service_.settle();
  EXPECT_THAT(handled_, ElementsAre(best));
  EXPECT_THAT(service_.urlSession->urls(), ElementsAre("https://i/x", "https://t/"));
  EXPECT_TRUE(store().object("vs_tags"));
  EXPECT_EQ(service_.console->count("conv"), 1u);
}

TEST_F(ServiceTest, TheHandlerIsCalledWithNoLockHeld) {
  // Another process must be able to deliver while the application's handler takes its time.
  std::size_t looked = 0;
  const auto handler = [&](auto) {
    for (const auto& path : device_->files->paths()) {
      ++looked;
      EXPECT_EQ(path, *service_.fileManager->containerPath(group) + "/vorsel.categories.lock")
          << "where the application's other processes look for it";
      const bool free = std::async(std::launch::async, [&] {
                          const std::unique_lock lock(*device_->files->mutexOf(path), std::try_to_lock);
                          return lock.owns_lock();
                        }).get();
      EXPECT_TRUE(free) << path;
    }
  };
  for (const char* n : {R"({"body":"B"})", R"({"image":"https://i/x"})", R"({"image":"https://no host"})"}) {
    SCOPED_TRACE(n);
    VorselKellp::didReceiveNotification(request(message(std::string(",\"n\":") + n), "n-1"),
                                        std::make_shared<platform::NotificationContent>(), handler);
    service_.urlSession->setRule("*", ServerAnswer::failure("down"));
    service_.settle();
  }
  EXPECT_EQ(looked, 3u) << "the lock's file";
}

TEST_F(ServiceTest, TwoExtensionsAtOnceLoseNothing) {
  constexpr int each = 40;
  testing_platform::MemoryPlatform other(device_, testing_platform::ProcessKind::extension,
                                         "com.example.app.other");
  const auto deliverMany = [](testing_platform::MemoryPlatform& process, const std::string& prefix) {
    const auto kellp = std::make_shared<Kellp>(process.platform());
    kellp->context->state.setAppGroupSetting(group);
    for (int i = 0; i < each; ++i) {
      kellp->serviceExtension->didReceive(
          request(message(R"(,"n":{"data":{"url":"https://o"}})"), prefix + std::to_string(i)),
          std::make_shared<platform::NotificationContent>(), [](auto) {});
    }
    EXPECT_EQ(kellp->serviceExtension->lastReceived().at(0).notifId, prefix + std::to_string(each - 1));
  };
  std::thread thread([&] { deliverMany(other, "b"); });
  deliverMany(service_, "a");
  thread.join();
  EXPECT_EQ(device_->notificationCenter->categories().size(), 2u * each);
  for (const char* key : {"vs_url", "vs_t"})
    EXPECT_EQ(store().object(key)->as<Map>()->size(), 2u * each) << key;
}

}  // namespace
}  // namespace VorselKelp
