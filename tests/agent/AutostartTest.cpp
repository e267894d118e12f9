#include "program/Autostart.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::agent {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Answers when it is told to.
class FakePortal : public freedesktop::BackgroundPortal {
 public:
  void ask(freedesktop::BackgroundWish wish, Answer answer) override {
    wishes.push_back(wish.autostart);
    answers.push_back(std::move(answer));
  }
  [[nodiscard]] bool idle() const override { return true; }

  std::vector<bool> wishes;
  std::vector<Answer> answers;
};

class AutostartTest : public testing::Test {
 protected:
  /// The agent's next life.
  void restart() {
    autostart = makePortalAutostart(*state, portal, {"/app/agent"});
    portal->wishes.clear();
  }
  /// What it writes when its last question is answered so.
  std::string answer(const Result<bool>& result) {
    testing::internal::CaptureStderr();
    portal->answers.back()(result);
    return testing::internal::GetCapturedStderr();
  }

  testing_support::TemporaryFolder folder;
  std::unique_ptr<State> state = *State::open(folder / "push");
  std::shared_ptr<FakePortal> portal = std::make_shared<FakePortal>();
  std::unique_ptr<Autostart> autostart;
};

TEST_F(AutostartTest, ThePortalIsAskedOnceForEachChange) {
  restart();
  autostart->want(false);
  EXPECT_THAT(portal->wishes, ElementsAre()) << "there can be nothing yet";
  for (const bool wanted : {true, true, false, true}) autostart->want(wanted);
  EXPECT_THAT(portal->wishes, ElementsAre(true)) << "one question at a time";
  EXPECT_EQ(answer(true), "");
  autostart->want(true);
  EXPECT_THAT(portal->wishes, ElementsAre(true));
  restart();
  autostart->want(true);
  EXPECT_THAT(portal->wishes, ElementsAre()) << "an earlier life has asked";
  autostart->want(false);
  autostart->want(true);
  answer(false);
  EXPECT_THAT(portal->wishes, ElementsAre(false, true));

  auto late = std::move(portal->answers.back());
  restart();
  late(true);  // to the life that has ended
  autostart->want(false);
  EXPECT_THAT(portal->wishes, ElementsAre(false)) << "nobody knows what became of the last question";
}

TEST_F(AutostartTest, ARefusalIsALineAndIsNotAskedAgain) {
  restart();
  autostart->want(true);
  EXPECT_THAT(answer(Error{"there is no portal"}),
              HasSubstr("Reminders will wait for the application: the portal was asked for an autostart, and "
                        "there is no portal\n"));
  for (const bool wanted : {true, false}) autostart->want(wanted);
  EXPECT_THAT(portal->wishes, ElementsAre(true)) << "nothing is to be taken back";
  restart();
  autostart->want(true);
  EXPECT_THAT(answer(false), HasSubstr("Reminders will wait for the application"));
  restart();
  autostart->want(true);
  EXPECT_THAT(portal->wishes, ElementsAre());
  autostart->want(false);
  EXPECT_THAT(answer(Error{"gone"}), HasSubstr("The push agent starts with the session still: "));
  EXPECT_THAT(portal->wishes, ElementsAre(false));
}

}  // namespace
}  // namespace VorselKelp::agent
