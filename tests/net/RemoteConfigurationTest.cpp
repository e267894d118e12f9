#include "net/RemoteConfiguration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "core/TestCore.h"

namespace VorselKelp {
namespace {

using testing::ElementsAre;
using testing_platform::ServerAnswer;

class RemoteConfigurationTest : public testing::Test {
 protected:
  RemoteConfigurationTest() {
    for (const char* key : {"vs_config_url", "vs_activity_url", "vs_user_url"})
      core_.app.standardDomain->setObject(key, {std::string("https://old.example/") + key});
    core_.app.standardDomain->setObject("vs_analytics", {false});
  }

  /// Fetches, and answers with `answer`; how often the start-up was continued.
  int fetch(const ServerAnswer& answer) {
    int continued = 0;
    configuration_->fetch("key", [&] {
      ++continued;
      if (continued == 1) linesAtFirst_ = core_.app.console->texts().size();
    });
    core_.app.urlSession->answer(fetches_++, answer);
    return continued;
  }
  int fetchDocument(const std::string& document, int status = 200) {
    ServerAnswer answer;
    answer.status = status;
    answer.body = document;
    return fetch(answer);
  }

  TestCore core_;
  std::shared_ptr<RemoteConfiguration> configuration_ =
      std::make_shared<RemoteConfiguration>(core_.context, std::make_shared<VorselRequest>(core_.context));
  std::size_t fetches_ = 0;
  std::size_t linesAtFirst_ = 0;
};

TEST_F(RemoteConfigurationTest, HowOftenStartUpGoesOn) {
  struct Case {
    int status;
    const char* body;
    int continued;
    bool stored;
  };
  // 204 and 304 never have a body. An empty one is a document that does not decode, unless it is an error's.
  const Case cases[] = {{200, "{}", 1, true},       {200, "", 1, true},    {299, "{}", 1, true},
                        {300, "{}", 2, true},       {204, "{}", 0, false}, {304, "{}", 1, false},
                        {404, "no", 2, true},       {503, "", 1, false},   {200, "<html>", 1, true},
                        {200, "{\"url\":", 1, true}};
  for (const auto& c : cases) {
    core_.app.standardDomain->removeObject("vs_autoconf");
    core_.app.standardDomain->removeObject("vs_last_modified");
    core_.app.console->clear();
    EXPECT_EQ(fetchDocument(c.body, c.status), c.continued) << c.status << c.body;
    EXPECT_THAT(core_.app.console->texts(),
                ElementsAre("Response HTTP Status code: " + std::to_string(c.status)));
    if (c.continued > 0) {
      EXPECT_EQ(linesAtFirst_, c.status > 299 ? 0u : 1u) << "above 299 start-up goes on before the line";
    }
    EXPECT_EQ(core_.text("vs_autoconf"), c.stored ? std::optional<std::string>(c.body) : std::nullopt);
    EXPECT_EQ(core_.text("vs_last_modified").has_value(), c.stored);
  }
}

TEST_F(RemoteConfigurationTest, ATransportErrorEndsStartUp) {
  EXPECT_EQ(fetch(ServerAnswer::failure("no network")), 0);
  EXPECT_THAT(core_.app.console->texts(), ElementsAre(testing::StartsWith("Error took place ")));
  EXPECT_THAT(core_.app.console->texts()[0], testing::HasSubstr("no network"));
  EXPECT_FALSE(core_.text("vs_autoconf"));
  EXPECT_EQ(core_.stored<bool>("vs_analytics"), false);
  EXPECT_EQ(fetchDocument(std::string((1 << 20) + 1, ' ')), 0) << "too large a document is a transport error";
}

TEST_F(RemoteConfigurationTest, StoresTheTextAndItsTime) {
  core_.app.device->clock->setNow(1794709483.5);
  EXPECT_EQ(fetchDocument("\xEF\xBB\xBF"
                          R"({"url":{"user":["https:\/\/u.example\/1"]},"x":"\u0041"})"),
            1);
  EXPECT_EQ(core_.text("vs_autoconf"), R"({"url":{"user":["https://u.example/1"]},"x":"u0041"})");
  EXPECT_EQ(core_.text("vs_last_modified"), "Sun, 15 Nov 2026 02:24:43 GMT");
  EXPECT_EQ(core_.text("vs_user_url"), "https://u.example/1") << "decoded from the bytes received";
}

TEST_F(RemoteConfigurationTest, OfEveryListTheFirstUrlCounts) {
  fetchDocument(R"({"url":{"activity":["https://a/1","https://a/2"],"user":[],"crash":null}})");
  EXPECT_EQ(core_.text("vs_activity_url"), "https://a/1");
  EXPECT_EQ(core_.text("vs_user_url"), "https://old.example/vs_user_url");
  EXPECT_FALSE(core_.text("vs_crash_url"));
  fetchDocument(R"({"url":{"crash":["https://c/1"],"user":["https://u/1"]}})");
  EXPECT_EQ(core_.text("vs_crash_url"), "https://c/1");
  EXPECT_EQ(core_.text("vs_user_url"), "https://u/1");
  EXPECT_EQ(core_.text("vs_activity_url"), "https://a/1");
}

TEST_F(RemoteConfigurationTest, SwitchesAreOverriddenOnlyOnRequest) {
  struct Case {
    const char* document;
    bool analytics;
    std::optional<bool> push;
  };
  const Case cases[] = {
      {"{}", true, {}},
      {"broken", true, {}},
      {R"({"analytics":{"enabled":false}})", true, {}},
      {R"({"analytics":{"enabled":false,"override":false}})", true, {}},
      {R"({"analytics":{"enabled":false,"override":true}})", false, {}},
      {R"({"analytics":{"override":true}})", false, {}},
      {R"({"analytics":{"enabled":true,"override":true}})", true, {}},
      {R"({"push_config":{"enabled":true}})", true, {}},
      {R"({"push_config":{"enabled":true,"override":true}})", true, true},
      {R"({"push_config":{"enabled":false,"override":true}})", true, false},
      {R"({"push_config":{"override":true}})", true, false},
      {R"({"consent":{"enabled":false,"override":true}})", true, {}},
      {R"({"analytics":{"enabled":false,"override":true},"push_config":{"override":1}})", true, {}},
  };
  for (const auto& c : cases) {
    core_.app.standardDomain->removeObject("vs_push");
    EXPECT_EQ(fetchDocument(c.document), 1) << c.document;
    EXPECT_EQ(core_.stored<bool>("vs_analytics"), c.analytics) << c.document;
    EXPECT_EQ(core_.stored<bool>("vs_push"), c.push) << c.document;
  }
  for (const char* untouched : {"vs_crash", "vs_geofence", "vs_beacon", "vs_custom", "vs_location"})
    EXPECT_FALSE(core_.app.standardDomain->object(untouched)) << untouched;
}

TEST_F(RemoteConfigurationTest, APromptThatIsNotNativeRaisesTheFlagForGood) {
  const std::pair<const char*, bool> documents[] = {
      {R"({"push_config":{"prompts":[]}})", false},
      {R"({"push_config":{"prompts":[{"prompt":"native"}]}})", false},
      {R"({"push_config":{"prompts":[{"prompt":"native"},{}]}})",
       false},  // a prompt without its kind: undecodable
      {R"({"push_config":{"prompts":[{"prompt":"native"},{"prompt":"Native","options":{"delay":"3"}}]}})",
       true},
      {R"({"push_config":{"prompts":[{"prompt":"native"}]}})", true},
  };
  for (const auto& [document, raised] : documents) {
    fetchDocument(document);
    EXPECT_EQ(core_.context->state.customPrompt, raised) << document;
  }
}

TEST_F(RemoteConfigurationTest, ClearsTheGroupSettingAndKeepsTheStore) {
  TestCore core;
  core.context->state.setAppGroupSetting(TestCore::group);
  core.context->storage.set(StorageKey::configUrl, "https://t.example/tag");
  const auto configuration =
      std::make_shared<RemoteConfiguration>(core.context, std::make_shared<VorselRequest>(core.context));
  configuration->fetch("key", [] {});
  core.app.urlSession->answer(0, {});
  EXPECT_EQ(core.context->state.appGroupSetting(), "");
  EXPECT_TRUE(core.groupStore()->object("vs_autoconf"));
  EXPECT_TRUE(core.app.standardDomain->contents().empty());
}

TEST_F(RemoteConfigurationTest, ADocumentThatIsNotUtf8IsNotKept) {
  EXPECT_EQ(fetchDocument("{\"url\":{\"user\":[\"https://u/\xff\"]}}"), 1);
  EXPECT_FALSE(core_.text("vs_autoconf"));
  EXPECT_TRUE(core_.text("vs_last_modified")) << "its time is";
  EXPECT_EQ(core_.text("vs_user_url"), "https://old.example/vs_user_url");
  EXPECT_EQ(core_.stored<bool>("vs_analytics"), true);
}

}  // namespace
}  // namespace VorselKelp
