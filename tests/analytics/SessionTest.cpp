#include <thread>

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

TEST_F(SessionTest, AHelperMayGoOnAnotherThreadWhileItsTaskExpires) {
  // A second answer to the fetch of the configuration puts a new one in its place, on the session's queue.
  for (int round = 0; round < 20; ++round) {
    VorselKellp::initialize(VorselBuilder("key", group).build());
    app_.urlSession->answer(app_.urlSession->unanswered().front(), status(404));
    life().becomeActive();
    life().enterBackground();
    VorselKellp::initialize(VorselBuilder("key", group).build());
    std::thread queue([&] { app_.urlSession->answer(app_.urlSession->unanswered().back(), status(404)); });
    life().expireBackgroundTasks();
    queue.join();
    EXPECT_THAT(life().backgroundTasks(), IsEmpty());
    app_.urlSession->cancelAll();
  }
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
  const auto root = std::make_shared<ui::ViewController>();
  const auto screen = std::make_shared<ui::ViewController>();
  app_.presenter->present(screen, root, false);
  app_.presenter->dismiss(screen, false);
  app_.browser->present("https://page.example/");
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
