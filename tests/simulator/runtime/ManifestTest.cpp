#include "VorselKelpSimulator/Manifest.h"

#include <gtest/gtest.h>

#include "VorselKelpSimulator/Runtime.h"

namespace VorselKelp::simulator {
namespace {

TEST(Manifest, ReadsEveryKeyAndFillsInWhatIsLeftOut) {
  const auto manifest = parseManifest(R"({
    "bundleIdentifier": "com.example.news", "version": "3.1.0", "machine": "iPad13,1", "layer": "facade",
    "screen": {"width": 820, "height": 1180.5}, "apiKey": "k-1", "appGroupId": "group.a",
    "switches": {"push": true, "beacon": false, "pusch": 1}, "colour": 1, "contentCategories": ["c"], "schedule": 3600, "publisher": {"id": "42", "source": "s"},
    "properties": {"VorselKellpTrackID": "feed-7", "Number": 3},
    "endpoints": {"collection": "http://127.0.0.1:1/"}})");
  ASSERT_TRUE(manifest.ok()) << manifest.error().description;
  EXPECT_EQ(manifest->unknownKeys, (std::vector<std::string>{"switches.pusch", "colour"}));
  EXPECT_EQ(manifest->contentCategories, std::vector<std::string>{"c"});
  EXPECT_EQ(manifest->machine, "iPad13,1");
  EXPECT_EQ(manifest->screenWidth, 820);
  EXPECT_EQ(manifest->screenHeight, 1180.5);
  EXPECT_EQ(manifest->layer, Manifest::Layer::facade);
  EXPECT_EQ(manifest->groups, std::vector<std::string>{"group.a"});
  EXPECT_EQ(manifest->switches.push, true);
  EXPECT_EQ(manifest->switches.beacon, false);
  EXPECT_EQ(manifest->switches.crash, std::nullopt);
  EXPECT_EQ(manifest->schedule, 3600.0);
  EXPECT_EQ(manifest->publisher->id, "42");
  EXPECT_EQ(manifest->endpoints.collection, "http://127.0.0.1:1");
  EXPECT_EQ(manifest->endpoints.tag, platform::Endpoints().tag);

  auto application = makeBundleInformation(*manifest, ProcessKind::application);
  EXPECT_EQ(application->mainBundleText("VorselKellpTrackID"), "feed-7");
  EXPECT_EQ(application->mainBundleText("Number"), std::nullopt);
  EXPECT_EQ(application->mainBundleText("CFBundleShortVersionString"), "3.1.0");
  auto service = makeBundleInformation(*manifest, ProcessKind::serviceExtension);
  EXPECT_EQ(service->mainBundleText("CFBundleIdentifier"), "com.example.news.service");
  EXPECT_EQ(service->mainBundleText("VorselKellpTrackID"), std::nullopt);
}

TEST(Manifest, NamesTheKeyThatIsWrong) {
  const auto errorOf = [](const char* text) {
    const auto manifest = parseManifest(text);
    return manifest ? std::string("no error") : manifest.error().description;
  };
  EXPECT_EQ(errorOf(R"({"apiKey": "k"})"), "\"bundleIdentifier\" must be a text that is not empty");
  EXPECT_EQ(errorOf(R"({"bundleIdentifier": "a", "switches": {"push": 1}})"),
            "\"switches.push\" must be true or false");
  EXPECT_EQ(errorOf(R"({"bundleIdentifier": "a", "screen": 5})"), "\"screen\" must be an object");
  EXPECT_EQ(errorOf(R"({"bundleIdentifier": "a", "groups": ["x", 1]})"),
            "\"groups\" must be a list of texts");
  EXPECT_EQ(errorOf(R"({"bundleIdentifier": "a", "layer": "roof"})"),
            "\"layer\" must be \"core\" or \"facade\"");
  EXPECT_EQ(errorOf("[]"), "it is no JSON object");
  EXPECT_NE(loadManifest("/nowhere/news.json").error().description.find("/nowhere/news.json"),
            std::string::npos);
}

}  // namespace
}  // namespace VorselKelp::simulator
