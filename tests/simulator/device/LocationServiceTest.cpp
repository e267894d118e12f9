#include "VorselKelpSimulator/LocationService.h"

#include <gtest/gtest.h>

#include "VorselKelpPosix/EventLoop.h"

namespace VorselKelp::simulator {
namespace {

constexpr const char* shop = "00000000-0000-0000-0000-0000000000AB";
constexpr const char* door = "00000000-0000-0000-0000-0000000000CD";

struct Listener final : platform::LocationManagerDelegate {
  void didEnterRegion(const platform::Region& region) override { heard.push_back("in " + region.identifier); }
  void didExitRegion(const platform::Region& region) override { heard.push_back("out " + region.identifier); }
  void didDetermineState(platform::RegionState state, const platform::Region& region) override {
    heard.push_back((state == platform::RegionState::inside ? "inside " : "not inside ") + region.identifier);
  }
  void didRangeBeacons(const std::vector<platform::Beacon>& beacons,
                       const platform::Region& region) override {
    heard.push_back(std::to_string(beacons.size()) + " near " + region.identifier);
  }
  std::vector<std::string> heard;
};

TEST(LocationService, TellsEachManagerOfItsOwnRegions) {
  const auto loop = std::make_shared<posix::EventLoop>();
  const auto location = makeLocation(loop);
  const auto listener = std::make_shared<Listener>();
  const auto happen = [&](const std::string& text) { return location->happen(*parseBeaconEvent(text)); };
  auto manager = location->makeLocationManager();
  manager->setDelegate(listener);
  manager->startMonitoring({"shop", shop});
  manager->startRangingBeacons({"shop", shop});
  manager->startRangingBeacons({"door", door});

  EXPECT_TRUE(happen("enter:00000000-0000-0000-0000-0000000000ab"));
  EXPECT_FALSE(happen(std::string("enter:") + door));
  manager->requestState({"shop", shop});
  EXPECT_EQ(listener->heard, std::vector<std::string>{"in shop"});
  EXPECT_TRUE(loop->run([] { return true; }, posix::EventLoop::Clock::now() + posix::loopDuration(10)));
  EXPECT_TRUE(happen(std::string("range:") + shop + "," + door + "," + shop));
  EXPECT_TRUE(happen(std::string("inside:") + shop));
  EXPECT_TRUE(happen(std::string("exit:") + shop));
  EXPECT_EQ(listener->heard, (std::vector<std::string>{"in shop", "inside shop", "1 near door", "2 near shop",
                                                       "inside shop", "out shop"}));
  manager = nullptr;
  EXPECT_FALSE(happen(std::string("exit:") + shop));
}

TEST(LocationService, ReadsOnlyWholeEvents) {
  for (const char* text : {"", "enter", "enter:", "fly:00000000-0000-0000-0000-000000000000",
                           "enter:0000000-00000-0000-0000-000000000000",
                           "exit:00000000-0000-0000-0000-000000000000,00000000-0000-0000-0000-000000000001",
                           "range:00000000-0000-0000-0000-000000000000,", "inside:not-a-uuid"}) {
    EXPECT_FALSE(parseBeaconEvent(text).ok()) << text;
  }
}

}  // namespace
}  // namespace VorselKelp::simulator
