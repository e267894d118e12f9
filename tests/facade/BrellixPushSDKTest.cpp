#include "BrellixPush/BrellixPushSDK.h"

#include <string>
#include <utility>
#include <vector>

#include "core/CoreContext.h"
#include "facade/Facade.h"
#include "facade/FacadeTest.h"

namespace BrellixPush {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using VorselKelp::status;
using VorselKelp::VorselKellp;
using VorselKelp::platform::DefaultsValue;
using Map = DefaultsValue::Map;

struct Listener final : BrellixPushSDKDelegate {
  void notificationTokenChanged(const std::string& token) override { heard.push_back("token " + token); }
  void brellixPushSDKInited(bool success) override { heard.push_back(success ? "inited" : "not inited"); }
  std::vector<std::string> heard;
};

class SDKTest : public FacadeTest {
 protected:
  static Map switches(const VorselKelp::testing_platform::MemoryDefaultsDomain& domain) {
    Map all = domain.contents();
    std::erase_if(all, [](const auto& entry) { return !entry.first.starts_with("bx_"); });
    return all;
  }
  static std::pair<std::string, std::string> groups() {
    const auto context = VorselKelp::CoreContext::current("a test");
    return {Facade::of(*context)->appGroupSetting(), context->state.appGroupSetting()};
  }
};

TEST_F(SDKTest, TheBuilderWritesTheSwitchesThatAreChosen) {
  auto config = BrellixPushSDKBuilder("key", group).build();
  EXPECT_EQ(switches(store()), (Map{{"bx_analytics", {true}}}));
  EXPECT_EQ(config->apiKey(), "key");
  EXPECT_EQ(config->appGroupId(), group);
  EXPECT_FALSE(config->schedule() || config->consent());
  (void)BrellixPushSDKBuilder("key", group)
      .crash()
      .push()
      .customNotificationHandling()
      .analytics(false)
      .build();
  const Map chosen{
      {"bx_analytics", {false}}, {"bx_crash", {true}}, {"bx_custom", {true}}, {"bx_push", {true}}};
  EXPECT_EQ(switches(store()), chosen);
  store().removeObject("bx_custom");
  const auto flushes = store().synchronizations();
  (void)BrellixPushSDKBuilder("key", group).custom().build();
  EXPECT_EQ(store().synchronizations(), flushes + 2) << "one for each switch that is written";
  Map kept = chosen;
  kept["bx_analytics"] = {true};
  EXPECT_EQ(switches(store()), kept) << "what is not chosen stays as it was";

  EXPECT_DEATH(BrellixPushSDKBuilder(std::nullopt, group), "Fatal error: BrellixPushSDKBuilder");
  app_.bundle->setMain("VorselKellpApiKey", "listed");
  EXPECT_EQ(BrellixPushSDKBuilder(std::nullopt, group).build()->apiKey(), "listed");
  EXPECT_DEATH(BrellixPushSDK::initialize(nullptr), "Fatal error: BrellixPushSDK");
}

TEST_F(SDKTest, TheCoreGetsEverySwitchFromTheFacadesStore) {
  store().setObject("vs_reg", {true});  // else an address is written over the crash switch
  const auto chosen = BrellixPushSDKBuilder("key", group).crash().push().build();
  using Names = std::pair<std::string, const char*>;
  const Names keys[] = {{"bx_crash", "vs_crash"},      {"bx_analytics", "vs_analytics"},
                        {"bx_push", "vs_push"},        {"bx_geofence", "vs_geofence"},
                        {"bx_beacom", "vs_beacon"},    {"bx_custom", "vs_custom"},
                        {"bx_location", "vs_location"}};
  for (const auto& [on, ofCore] : keys) {
    for (const auto& [key, core] : keys) store().setObject(key, {key == on});
    BrellixPushSDK::initialize(chosen);
    for (const auto& [key, core] : keys) EXPECT_EQ(stored<bool>(core), key == on) << on << " " << core;
  }
  store().setObject("bx_location", {std::string("yes")});
  store().removeObject("bx_crash");
  store().setObject("vs_crash", {true});
  BrellixPushSDK::initialize(chosen);
  EXPECT_EQ(stored<bool>("vs_location"), false) << "a text is no switch";
  EXPECT_EQ(stored<bool>("vs_crash"), false) << "what is absent is off";

  device_->groupStores->refuse(group);
  VorselKellp::install(app_.platform());
  const auto config = BrellixPushSDKBuilder("", group).push().build();
  BrellixPushSDK::initialize(config);
  EXPECT_FALSE(config->storedSwitches().push.value_or(true)) << "no store, no switch";
  EXPECT_EQ(config->push(), true) << "the configuration keeps it";
  EXPECT_TRUE(config->analytics());
  for (const auto& absent :
       {config->crash(), config->geofence(), config->beacon(), config->custom(), config->location()})
    EXPECT_FALSE(absent);
  EXPECT_TRUE(printed("\n***************\n Missing ApiKey! \n***************\n"));
}

TEST_F(SDKTest, OnlyAGroupThatTheDeviceKnowsIsNamed) {
  const std::pair<std::string, std::string> none;
  const std::string known = group;
  for (const std::string& name : {std::string(), std::string(" \t\r\n "), std::string("group.unknown"),
                                  " " + known, "../" + known, std::string(10000, 'g')}) {
    BrellixPushSDK::setValueFor(name);
    EXPECT_EQ(groups(), none) << name.substr(0, 40);
  }
  BrellixPushSDK::setValueFor(known);
  EXPECT_EQ(groups(), std::pair(known, known));
  BrellixPushSDK::setValueFor("group.unknown");
  EXPECT_EQ(groups(), std::pair(known, known));
}

TEST_F(SDKTest, WithoutABuilderAConfigurationNamesTheGroupForTheNextOne) {
  (void)BrellixPushSDKConfig("key", group, {}, false, false);
  EXPECT_THAT(store().contents(), IsEmpty());
  EXPECT_TRUE(app_.standardDomain->contents().contains("bx_analytics"));
  (void)BrellixPushSDKConfig("key", group, {}, false, false);
  EXPECT_TRUE(store().contents().contains("bx_analytics")) << "the first one has named it";
}

TEST_F(SDKTest, WithAnUnknownGroupBothLayersUseTheApplicationsOwnStore) {
  BrellixPushSDK::initialize(BrellixPushSDKBuilder("key", "group/../../unknown").push().build());
  const Map own = app_.standardDomain->contents();
  EXPECT_TRUE(own.contains("bx_push") && own.contains("vs_push"));
  EXPECT_THAT(store().contents(), IsEmpty());
  EXPECT_THAT(device_->files->paths(), IsEmpty());
  (void)BrellixPushSDKBuilder("key", std::nullopt).build();
  EXPECT_EQ(groups().first, "");
}

TEST_F(SDKTest, TheBridgePassesTwoEventsOnToTheMainQueueAndNoOther) {
  const auto listener = std::make_shared<Listener>();
  BrellixPushSDK::setBrellixDelegate(listener);
  EXPECT_EQ(BrellixPushSDK::brellixDelegate(), listener);
  startFacade();
  const std::uint8_t token[] = {0x00, 0xAB};
  for (const int code : {201, 500}) {
    BrellixPushSDK::registerDeviceToken(std::span(token, code == 201 ? 2 : 1));
    EXPECT_THAT(listener->heard, IsEmpty());
    app_.mainQueue->runUntilIdle();
    EXPECT_THAT(std::exchange(listener->heard, {}), ElementsAre(code == 201 ? "token 00ab" : "token 00"));
    app_.urlSession->answer(app_.urlSession->unanswered().back(), status(code));
    EXPECT_THAT(listener->heard, IsEmpty());
    app_.mainQueue->runUntilIdle();
    EXPECT_THAT(std::exchange(listener->heard, {}), ElementsAre(code == 201 ? "inited" : "not inited"));
  }

  const auto bridge = VorselKellp::vorselDelegate();
  ASSERT_TRUE(bridge) << "it lives although the core holds it weakly";
  const auto waiting = app_.mainQueue->waiting();
  bridge->handleURL("app://x");
  bridge->enteredBeaconRegionWith("b");
  bridge->enteredGeofenceRegionWith("g");
  bridge->locationChanged(1, 2);
  bridge->passLocation(1);
  EXPECT_EQ(app_.mainQueue->waiting(), waiting);
}

TEST_F(SDKTest, ADelegateThatIsReleasedHearsNothingAndALaterOneIsHeard) {
  auto listener = std::make_shared<Listener>();
  BrellixPushSDK::setBrellixDelegate(listener);
  startFacade();
  VorselKellp::vorselDelegate()->vorselInited(true);
  listener.reset();
  app_.mainQueue->runUntilIdle();
  EXPECT_FALSE(BrellixPushSDK::brellixDelegate());
  VorselKellp::vorselDelegate()->vorselInited(false);
  const auto later = std::make_shared<Listener>();
  BrellixPushSDK::setBrellixDelegate(later);
  app_.mainQueue->runUntilIdle();
  EXPECT_THAT(later->heard, ElementsAre("not inited"));
}

TEST_F(SDKTest, ForwardsToTheCore) {
  startFacade();
  EXPECT_FALSE(VorselKelp::CoreContext::current("a test")->state.configuration()->adex);
  BrellixPushSDK::setUtm("k", "v");
  EXPECT_EQ(BrellixPushSDK::getUtm("k"), "v");
  BrellixPushSDK::removeUtm("k");
  EXPECT_EQ(VorselKellp::getUtm("k"), "Error! Key: k does not exist");
  BrellixPushSDK::track({{"a", 1}, {"b", 2}, {"c", 3}});
  BrellixPushSDK::removeTrackFor("a");
  EXPECT_EQ(BrellixPushSDK::getTrack(), VorselKellp::getTrack());
  EXPECT_EQ(BrellixPushSDK::getTrackFor("b"), "2");
  std::optional<int> answered;
  BrellixPushSDK::sendTrack([&](auto code, const auto&, const auto&) { answered = code; });
  app_.urlSession->answer(app_.urlSession->unanswered().back(), status(201));
  EXPECT_EQ(answered, 201);
  BrellixPushSDK::removeTrack();
  EXPECT_THAT(VorselKellp::getTrack(), IsEmpty());

  const auto content = std::make_shared<VorselKelp::platform::NotificationContent>();
  BrellixPushSDK::increseNotificationCount(content);
  EXPECT_EQ(content->badge, 1);
  BrellixPushSDK::decreseNotificationCount(nullptr);
  EXPECT_EQ(app_.application->badge(), 0);
}

TEST_F(SDKTest, ADeepLinkArrivesByTheCompletionAlone) {
  startFacade();
  VorselKelp::platform::NotificationRequest request;
  const auto content = std::make_shared<VorselKelp::platform::NotificationContent>();
  std::size_t handed = 0;
  const auto handler = [&](const auto& best) { handed += best == content ? 1 : 0; };
  std::vector<std::string> links;
  const auto link = [&](const auto& url) { links.push_back(url.value_or("none")); };
  for (const bool handle : {true, false}) {
    request.identifier = handle ? "n-1" : "n-2";
    request.content.userInfo = VorselKelp::platform::UserInfo::fromJSON(
        R"({"aps":{"alert":{"title":"T","n":{"cl":1,"data":{"url":"app://page","t":[]}}}}})");
    EXPECT_FALSE(BrellixPushSDK::didReceiveNotification(request, content, handler));
    BrellixPushSDK::pushTrackOpen(
        handle, {request, std::string(VorselKelp::platform::defaultActionIdentifier)}, link);
    app_.settle();
  }
  EXPECT_THAT(links, ElementsAre("app://page"));
  EXPECT_THAT(app_.browser->pages(), IsEmpty());
  EXPECT_EQ(content->title, "T");
  BrellixPushSDK::notificationBuilderWillTerminate(request.content.userInfo, content, handler);
  EXPECT_EQ(handed, 3u);
}

}  // namespace
}  // namespace BrellixPush
