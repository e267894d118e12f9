#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "reliability/Road.h"

namespace VorselKelp::reliability {
namespace {

using platform::DefaultsValue;
using testing_platform::Fault;
using testing_platform::FaultPlan;
using testing_platform::FaultPoint;
using testing_platform::FaultRule;

/// How many calls the whole road makes, or how many of one kind.
std::size_t callsOfTheRoad(std::optional<FaultPoint> only) {
  const auto plan = std::make_shared<FaultPlan>();
  Road road(plan);
  road.walk();
  const auto calls = plan->calls();
  return static_cast<std::size_t>(only ? std::ranges::count(calls, *only) : std::ssize(calls));
}

/// That an entry is all there or not at all.
void expectWhole(const Road& road, const Message& message) {
  const auto trackers = road.store().mapEntry("vs_t", {message.identifier}, platform::MapKind::listMap);
  const auto link = road.store().mapEntry("vs_url", {message.identifier, platform::defaultActionIdentifier},
                                          platform::MapKind::textMapMap);
  EXPECT_EQ(trackers.has_value(), link.has_value()) << "half of " << message.identifier;
  EXPECT_EQ(trackers.value_or(DefaultsValue{message.trackers()}), DefaultsValue{message.trackers()});
  EXPECT_EQ(link.value_or(DefaultsValue{message.link()}), DefaultsValue{message.link()});
}

std::int64_t owed(const Road& road) {
  const auto value = road.store().object("vs_openCounter");
  return value ? *value->as<std::int64_t>() : 0;
}

void expectSoundState(const Road& road) {
  for (const auto& message : {first, second, plain}) expectWhole(road, message);
  for (const auto& delivery : road.deliveries) {
    EXPECT_FALSE(delivery.title.empty());
    if (delivery.stopped) {
      EXPECT_LE(delivery.handlerCalls, 1);
    } else {
      EXPECT_EQ(delivery.handlerCalls, 1);
    }
  }
  EXPECT_LE(road.opensAccepted + owed(road), road.opensAsked) << "opens were counted twice";
  const std::set<std::string> once(road.clicked.begin(), road.clicked.end());
  EXPECT_EQ(once.size(), road.clicked.size()) << "a click was tracked twice";
  for (const auto& shown : road.device->notificationCenter->delivered()) {
    for (const auto& attachment : shown.content.attachments) {
      const auto bytes = road.device->files->read(attachment.path);
      ASSERT_TRUE(bytes.ok()) << attachment.path;
      EXPECT_EQ(*bytes, testing_platform::pngBeginning(2, 2));
    }
  }
}

/// The next start, the next notification and its tap work as if nothing had ever been.
void expectRecovery(Road& road) {
  road.heal();
  const int before = road.initialised;
  road.launch();
  EXPECT_EQ(road.initialised, before + 1);
  EXPECT_EQ(road.store().object("vs_reg"), DefaultsValue{true});
  EXPECT_EQ(road.store().object("vs_tok"), DefaultsValue{std::string("010203")});
  EXPECT_EQ(owed(road), 0) << "nothing is owed once a server has answered";
  road.push(first);
  EXPECT_EQ(road.deliveries.back().handlerCalls, 1);
  EXPECT_EQ(road.deliveries.back().title, "Title of first");
  expectWhole(road, first);
  const auto shown = road.device->notificationCenter->delivered();
  EXPECT_EQ(std::ranges::count(shown, "first", [](const auto& n) { return n.identifier; }), 1);
  const auto opened = road.opened.size(), clicked = road.clicked.size();
  road.tap(first, std::string(platform::defaultActionIdentifier));
  EXPECT_EQ(road.opened.size(), opened + 1);
  EXPECT_EQ(road.opened.back(), first.link());
  EXPECT_EQ(road.clicked.size(), clicked + 2);
  EXPECT_FALSE(road.store().mapEntry("vs_t", {"first"}, platform::MapKind::listMap));
}

struct Kind {
  const char* name;
  Fault fault;
  bool onwards = false;
  std::optional<FaultPoint> only = {};
};

class RoadTest : public testing::TestWithParam<Kind> {};

TEST_P(RoadTest, EveryCallOfTheRoadMayFail) {
  const auto calls = callsOfTheRoad(GetParam().only);
  ASSERT_GT(calls, GetParam().only ? 20u : 150u);
  for (std::size_t at = 1; at <= calls; ++at) {
    SCOPED_TRACE("call " + std::to_string(at));
    const auto plan = std::make_shared<FaultPlan>(FaultRule{
        .at = at, .fault = GetParam().fault, .onwards = GetParam().onwards, .only = GetParam().only});
    Road road(plan);
    road.walk();
    EXPECT_GE(plan->disturbed(), 1u);
    expectSoundState(road);
    expectRecovery(road);
    if (HasFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Faults, RoadTest,
    testing::Values(Kind{"Killed", Fault::stop}, Kind{"RefusedOnce", Fault::refusal},
                    Kind{"RefusedFromThereOn", Fault::refusal, true}, Kind{"Unanswered", Fault::noAnswer},
                    Kind{"NeverAnsweredAgain", Fault::noAnswer, true, FaultPoint::request},
                    Kind{"Late", Fault::lateAnswer}, Kind{"AllLate", Fault::lateAnswer, true},
                    Kind{"AnsweredWithAnError", Fault::errorAnswer}),
    [](const auto& kind) { return std::string(kind.param.name); });

TEST(OpenTest, AnOpenWhoseRequestFailsIsMadeUpForExactlyOnce) {
  for (std::size_t at = 1; at <= 12; ++at) {
    SCOPED_TRACE("request " + std::to_string(at));
    Road road(std::make_shared<FaultPlan>(FaultRule{.at = at, .onwards = true, .only = FaultPoint::request}));
    road.launch();
    road.launch();
    EXPECT_EQ(road.opensAccepted + owed(road), road.opensAsked);
    road.heal();
    road.launch();
    EXPECT_EQ(road.opensAccepted, road.opensAsked);
    EXPECT_EQ(owed(road), 0);
  }
}

TEST(OpenTest, WhatAFullDiskKeepsOwedIsNotSentWithEveryOpen) {
  Road road(std::make_shared<FaultPlan>());
  road.launch();
  road.store().setObject("vs_openCounter", {std::int64_t{5}});
  road.store().dropWrites(true);
  const int accepted = road.opensAccepted;
  road.launch();
  EXPECT_EQ(road.opensAccepted, accepted + 2) << "the start and the event";
  road.store().dropWrites(false);
  road.launch();
  EXPECT_EQ(road.opensAccepted, accepted + 2 + 2 + 5);
  EXPECT_EQ(owed(road), 0);
}

TEST(SessionTest, AFirstStartOnAFullDiskReportsTheSessionThatItCounts) {
  Road road(std::make_shared<FaultPlan>());
  road.store().dropWrites(true);
  road.launch();
  road.store().dropWrites(false);
  EXPECT_TRUE(road.store().contents().empty());
  road.launch();
  EXPECT_EQ(road.store().object("vs_session_num"), DefaultsValue{std::int64_t{1}});
}

TEST(TagTest, AKilledExtensionLeavesNoReplacedNotificationBehind) {
  const auto plan = std::make_shared<FaultPlan>();
  {
    Road counting(plan);
    counting.launch();
    counting.push(plain);
    counting.push(first);
  }
  for (std::size_t at = 1; at <= plan->calls().size(); ++at) {
    SCOPED_TRACE("call " + std::to_string(at));
    Road road(std::make_shared<FaultPlan>(FaultRule{.at = at, .fault = Fault::stop}));
    road.launch();
    road.push(plain);
    road.push(first);
    if (road.deliveries[0].stopped || !road.deliveries[1].stopped) continue;
    road.push(first);
    const auto shown = road.device->notificationCenter->delivered();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].identifier, "first");
  }
}

}  // namespace
}  // namespace VorselKelp::reliability
