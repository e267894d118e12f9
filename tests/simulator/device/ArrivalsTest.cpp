#include "VorselKelpSimulator/Arrivals.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include "VorselKelpSimulator/DeviceHome.h"
#include "VorselKelpSimulator/SimulatedDevice.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::simulator {
namespace {

using Place = Arrivals::Place;
using Taken = Arrivals::Taken;
using testing::ElementsAre;

constexpr std::int64_t day = 86400;

class ArrivalsTest : public testing::Test {
 protected:
  /// The identifiers that are handed over by a process that starts now.
  std::vector<std::string> delivered(const std::string& application = "com.example.news") {
    std::vector<std::string> identifiers;
    const auto take = [&](const Arrival& push) {
      identifiers.push_back(push.identifier);
      return Taken::forGood;
    };
    EXPECT_TRUE(Arrivals(home_, application).deliver(take).ok());
    return identifiers;
  }
  Place put(const std::string& identifier, std::optional<std::int64_t> expiration = {}) {
    const auto place = arrivals_.put({identifier, R"({"a": "\n"})"}, expiration);
    EXPECT_TRUE(place.ok());
    return *place;
  }
  static std::int64_t in(std::int64_t seconds) {
    return std::chrono::duration_cast<std::chrono::seconds>(
               std::chrono::system_clock::now().time_since_epoch())
               .count() +
           seconds;
  }

  testing_support::TemporaryFolder folder_;
  DeviceHome home_{folder_ / "home"};
  SimulatedDevice device_{home_, "com.example.news"};
  Arrivals arrivals_{home_, "com.example.news"};
};

TEST_F(ArrivalsTest, ADeviceThatIsOffGetsTheLastOfEachApplicationWhenItIsOn) {
  EXPECT_EQ(put("before"), Place::underWay);
  ASSERT_TRUE(device_.setOff(true).ok());
  EXPECT_TRUE(*SimulatedDevice(home_, "com.example.weather").isOff()) << "of all applications";
  EXPECT_EQ(put("one"), Place::kept);
  EXPECT_EQ(put("two"), Place::kept);
  EXPECT_EQ(put("now or never", 0), Place::dropped);
  ASSERT_TRUE(Arrivals(home_, "com.example.weather").put({"rain", "{}"}).ok());
  EXPECT_THAT(delivered(), ElementsAre());
  ASSERT_TRUE(device_.setOff(false).ok());
  put("three");
  EXPECT_THAT(delivered(), ElementsAre("before", "two", "three"));
  EXPECT_THAT(delivered(), ElementsAre());
  EXPECT_THAT(delivered("com.example.weather"), ElementsAre("rain"));
}

TEST_F(ArrivalsTest, WhatHasExpiredOnTheDevicesClockIsNotDelivered) {
  const auto keptFor = [&](std::optional<std::int64_t> expiration, double passed) {
    EXPECT_TRUE(device_.setOff(true).ok());
    put("push", expiration);
    EXPECT_TRUE(device_.setOff(false) && device_.advanceClock(passed));
    const bool came = !delivered().empty();
    EXPECT_TRUE(device_.advanceClock(-passed).ok());
    return came;
  };
  EXPECT_TRUE(keptFor(in(day), day - 600.0));
  EXPECT_FALSE(keptFor(in(day), day + 1.0));
  EXPECT_TRUE(keptFor({}, 30.0 * day - 600));
  EXPECT_FALSE(keptFor({}, 30.0 * day + 1));
  EXPECT_FALSE(keptFor(in(90 * day), 30.0 * day + 1));
  EXPECT_EQ(put("at once", 0), Place::underWay);
  EXPECT_THAT(delivered(), ElementsAre("at once"));
}

TEST_F(ArrivalsTest, WhatAProcessDidNotDeliverAnotherDoes) {
  for (const auto* each : {"a", "b", "c", "d"}) put(each);
  std::vector<std::string> seen;
  ASSERT_TRUE(arrivals_
                  .deliver([&](const Arrival& push) {
                    seen.push_back(push.identifier + push.payload);
                    EXPECT_TRUE(device_.setOff(push.identifier == "b").ok());
                    return Taken::forGood;
                  })
                  .ok());
  EXPECT_THAT(seen, ElementsAre(R"(a{"a": "\n"})", R"(b{"a": "\n"})")) << "it went off meanwhile";
  ASSERT_TRUE(device_.setOff(false).ok());
  ASSERT_TRUE(arrivals_.deliver([](const Arrival&) { return Taken::notYet; }).ok());
  EXPECT_EQ(arrivals_.count(), 2u);

  const auto folder = home_.arrivals("com.example.news");
  const auto damaged = folder + "/0";
  std::ofstream(damaged) << "no line";
  std::ofstream(folder + "/.new") << "half";
  EXPECT_THAT(delivered(), ElementsAre("c", "d"));
  EXPECT_FALSE(std::filesystem::exists(damaged));
}

TEST_F(ArrivalsTest, EachIsDeliveredOnceThoughManyDoItAtOnce) {
  constexpr int each = 60;
  std::atomic<int> taken{0};
  const auto work = [&](int worker) {
    Arrivals own(home_, "com.example.news");
    for (int i = 0; i < each; ++i) {
      EXPECT_TRUE(own.put({std::to_string(worker) + "-" + std::to_string(i), "{}"}).ok());
      EXPECT_TRUE(own.deliver([&](const Arrival&) {
                       ++taken;
                       return Taken::forGood;
                     })
                      .ok());
    }
  };
  std::vector<std::jthread> workers;
  for (int worker = 0; worker < 3; ++worker) workers.emplace_back(work, worker);
  workers.clear();
  EXPECT_EQ(taken, 3 * each);
  EXPECT_EQ(arrivals_.count(), 0u);
}

}  // namespace
}  // namespace VorselKelp::simulator
