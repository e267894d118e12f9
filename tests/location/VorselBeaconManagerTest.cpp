#include "location/VorselBeaconManager.h"

#include <string>
#include <vector>

#include "core/TestCore.h"
#include "kellp/KellpTest.h"

namespace VorselKelp {
namespace {

using platform::DefaultsValue;
using platform::RegionState;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* first = "00000000-0000-0000-0000-000000000330";
constexpr const char* second = "00000000-0000-0000-0000-000000000340";

struct Listener final : VorselKellpDelegate {
  void enteredBeaconRegionWith(const std::string& id) override { entered.push_back(id); }
  std::vector<std::string> entered;
};

struct BeaconTest : testing::Test {
  BeaconTest() { core.context->state.setDelegate(listener); }
  std::shared_ptr<VorselBeaconManager> make() { return VorselBeaconManager::start(core.context, quiet); }

  /// "identifier: title, body" of every notification added.
  std::vector<std::string> notifications() const {
    std::vector<std::string> all;
    for (const auto& one : core.app.device->notificationCenter->added())
      all.push_back(one.identifier + ": " + one.content.title + ", " + one.content.body);
    return all;
  }
  std::optional<DefaultsValue> table() const { return core.app.standardDomain->object("vs_beacon_interval"); }
  double now() const { return core.app.device->clock->now(); }

  TestCore core;
  testing_platform::MemoryLocation& location = *core.app.location;
  std::shared_ptr<Listener> listener = std::make_shared<Listener>();
  std::shared_ptr<QuietPeriods> quiet = std::make_shared<QuietPeriods>(core.context);
};

TEST_F(BeaconTest, WatchesTheTwoRegionsFromTheStartAndSaysWhenItEnds) {
  auto manager = make();
  EXPECT_THAT(location.asked(),
              ElementsAre("authorize", "monitor iBKS105-61", "range iBKS105-61", "state iBKS105-61",
                          "monitor iBKS105-94", "range iBKS105-94", "state iBKS105-94"));
  EXPECT_THAT(core.app.console->texts(), IsEmpty());
  manager.reset();
  EXPECT_THAT(core.app.console->texts(), ElementsAre(testing::EndsWith(" DEINITED")));
  location.enter(first);
  EXPECT_THAT(notifications(), IsEmpty());
}

TEST_F(BeaconTest, EnteringLeavingAndBeingInsideAreAnnouncedOneSecondLater) {
  auto manager = make();
  location.enter(first);
  location.leave(first);
  location.determine(RegionState::inside, second);
  EXPECT_THAT(notifications(), ElementsAre("notification.id.1: Beacon, ENTERED, iBKS105-61",
                                           "notification.id.2: Beacon, Exit , iBKS105-61",
                                           "notification.id.3: Beacon, INSIDE, iBKS105-94"));
  EXPECT_THAT(listener->entered, ElementsAre("iBKS105-61")) << "only entering is told the application";
  EXPECT_EQ(location.asked().back(), "range iBKS105-94") << "inside, ranging starts again";
  const auto& center = *core.app.device->notificationCenter;
  EXPECT_FALSE(center.pending().at(0).trigger->repeats);
  core.app.device->advance(0.9);
  EXPECT_THAT(center.delivered(), IsEmpty());
  core.app.device->advance(0.1);
  EXPECT_EQ(center.delivered().size(), 3u);
  EXPECT_THAT(center.pending(), IsEmpty());

  manager = make();
  listener.reset();
  location.enter(second);
  EXPECT_EQ(notifications().back(), "notification.id.1: Beacon, ENTERED, iBKS105-94") << "a new manager";
}

TEST_F(BeaconTest, OtherStatesAndPlacesThatAreNoBeaconAreIgnored) {
  const auto manager = make();
  const auto asked = location.asked().size();
  location.determine(RegionState::outside, first);
  location.determine(RegionState::unknown, first);
  const platform::Region place{"office", std::nullopt};
  manager->didEnterRegion(place);
  manager->didExitRegion(place);
  manager->didDetermineState(RegionState::inside, place);
  EXPECT_THAT(notifications(), IsEmpty());
  EXPECT_THAT(listener->entered, IsEmpty());
  EXPECT_EQ(location.asked().size(), asked);
}

TEST_F(BeaconTest, TheFirstRangingOnlyMakesTheTable) {
  const auto manager = make();
  location.range({{first}});
  EXPECT_EQ(table(), DefaultsValue{DefaultsValue::Map{}});
  EXPECT_EQ(core.app.standardDomain->synchronizations(), 1u);
  location.range({{first}});
  EXPECT_EQ(table(), (DefaultsValue{DefaultsValue::Map{{first, {now() + 5}}}}));
  EXPECT_EQ(core.app.standardDomain->synchronizations(), 2u);
  EXPECT_THAT(notifications(), IsEmpty());
}

TEST_F(BeaconTest, ABeaconThatIsStillQuietEndsTheWholeRound) {
  const auto manager = make();
  location.range({});
  location.range({{first}, {second}});
  const double start = now();
  const DefaultsValue both{DefaultsValue::Map{{first, {start + 5}}, {second, {start + 5}}}};
  EXPECT_EQ(table(), both);
  core.app.standardDomain->setObject("vs_beacon_interval",
                                     {DefaultsValue::Map{{first, {start + 5}}, {second, {start - 1}}}});
  const auto shifted = table();
  core.app.device->advance(5);
  location.range({{first}, {second}});
  EXPECT_EQ(table(), shifted) << "quiet up to and with the fifth second; the second one is skipped";
  location.range({{second}, {first}});
  EXPECT_EQ(table(), (DefaultsValue{DefaultsValue::Map{{first, {start + 5}}, {second, {start + 10}}}}))
      << "those before the quiet one count";
  core.app.device->advance(0.5);
  location.range({{first}, {second}});
  EXPECT_EQ(table(), (DefaultsValue{DefaultsValue::Map{{first, {start + 10.5}}, {second, {start + 10}}}}));
}

TEST_F(BeaconTest, ATableThatWentIsWrittenFromMemoryAndANewProcessReadsTheStored) {
  auto manager = make();
  location.range({});
  location.range({{first}});
  const auto known = table();
  core.app.standardDomain->removeObject("vs_beacon_interval");
  location.range({{second}});
  EXPECT_EQ(table(), known) << "the whole table of before, and nothing of this round";
  quiet = std::make_shared<QuietPeriods>(core.context);
  manager = make();
  location.range({{first}, {second}});
  EXPECT_EQ(table(), known);
}

TEST_F(KellpTest, BeaconsStartWithTheirSwitchAndPushAlone) {
  for (const auto& [push, beacon] : {std::pair{false, true}, {true, false}, {true, true}}) {
    VorselKellp::install(app_.platform());
    VorselBuilder builder("key", group);
    builder.beacon(beacon);
    if (push) builder.push();
    VorselKellp::initialize(builder.build());
    app_.urlSession->setRule("/tag/key.json", status(200, "{}"));
    app_.settle();
    EXPECT_EQ(app_.location->asked().empty(), !(push && beacon));
  }
  const auto listener = std::make_shared<Listener>();
  VorselKellp::setVorselDelegate(listener);
  app_.location->enter(first);
  EXPECT_THAT(listener->entered, ElementsAre("iBKS105-61"));
}

}  // namespace
}  // namespace VorselKelp
