#include "kellp/KellpTest.h"

namespace VorselKelp {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SessionTest : public KellpTest {
 protected:
  testing_platform::MemoryApplication& life() { return *app_.application; }
  std::optional<std::int64_t> visited() const { return stored<std::int64_t>("vs_visitedPCount"); }
};

TEST_F(SessionTest, TheBackgroundTaskLastsUntilTheApplicationReturns) {
  start();
  life().becomeActive();
  life().resignActive();
  life().enterBackground();
  EXPECT_THAT(life().backgroundTasks(), ElementsAre("ksession"));
  life().becomeActive();
  EXPECT_THAT(life().backgroundTasks(), IsEmpty());
  life().becomeActive();
}

TEST_F(SessionTest, TheFirstActivationBeginsASessionAndEndsNoTask) {
  start();
  life().enterBackground();
  life().becomeActive();
  EXPECT_THAT(life().backgroundTasks(), ElementsAre("ksession")) << "it only took the new session's flag";
  life().becomeActive();
  EXPECT_THAT(life().backgroundTasks(), IsEmpty());
}

TEST_F(SessionTest, AnExpiredTaskIsEndedOnce) {
  start();
  life().becomeActive();
  life().enterBackground();
  life().expireBackgroundTasks();
  EXPECT_THAT(life().backgroundTasks(), IsEmpty());
  life().enterBackground();
  life().becomeActive();
  EXPECT_THAT(life().backgroundTasks(), IsEmpty());
}

TEST_F(SessionTest, TerminationEndsTheSession) {
  start();
  app_.console->clear();
  life().terminate();
  EXPECT_THAT(lines(), ElementsAre("Session ended 2026-11-15 02:24:43 +0000"));
  life().enterBackground();
  life().becomeActive();
  EXPECT_EQ(life().backgroundTasks().size(), 1u) << "the next activation begins a session again";
}

TEST_F(SessionTest, BeforeStartUpWentOnNobodyListens) {
  VorselKellp::initialize(VorselBuilder("key", group).build());
  life().terminate();
  EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(SessionTest, ScreensAreCountedUntilASecondStartTakesTheHooksAway) {
  start();
  life().screenAppears();
  life().screenDisappears();
  life().screenAppears();
  EXPECT_EQ(visited(), 2);
  VorselKellp::sendCustomEvent("k", 1);
  EXPECT_EQ(occurrences(bodies("/v2/activity").back(), "\"scn\":2,"), 1u);
  start();
  EXPECT_EQ(visited(), 0);
  life().screenAppears();
  EXPECT_EQ(visited(), 0);
  start();
  life().screenAppears();
  EXPECT_EQ(visited(), 1);
}

}  // namespace
}  // namespace VorselKelp
