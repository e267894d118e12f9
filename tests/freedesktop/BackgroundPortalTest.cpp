#include "VorselKelpFreedesktop/BackgroundPortal.h"

#include <gmock/gmock.h>

#include "freedesktop/PortalServer.h"

namespace VorselKelp::freedesktop {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class BackgroundPortalTest : public BusTest {
 protected:
  void ask(bool autostart, const std::string& called) {
    portal->ask({autostart, {"/app/agent", "a b"}, "Wakes\xff"}, [this, called](const Result<bool>& answer) {
      answers.push_back(called + (answer ? (*answer ? ": yes" : ": no") : ": " + answer.error().description));
    });
  }

  std::shared_ptr<BackgroundPortal> portal = makeBackgroundPortal(queue, address);
  std::vector<std::string> answers;
};

TEST_F(BackgroundPortalTest, HearsWhatBecomesOfEachWish) {
  PortalServer server(address);
  ask(true, "first");
  ask(false, "second");
  ask(true, "third");
  waitUntil([&] { return server.wishes.size() == 3 && portal->idle(); });
  EXPECT_THAT(answers, ElementsAre());
  const std::string rest = "'commandline': <['/app/agent', 'a b']>, 'dbus-activatable': <false>}";
  EXPECT_THAT(server.wishes[0].options, HasSubstr("'reason': <'Wakes\uFFFD'>, 'autostart': <true>, " + rest));
  EXPECT_THAT(server.wishes[1].options, HasSubstr("'autostart': <false>, " + rest));

  server.respond("another", 0, "{'autostart': <true>}");
  server.respond(server.wishes[2].token, 0, "{'background': <true>, 'autostart': <true>}");
  server.respond(server.wishes[1].token, 0, "{'autostart': <'true'>}");
  server.respond(server.wishes[0].token, 1, "{'autostart': <true>}");
  server.respond(server.wishes[0].token, 0, "{'autostart': <true>}");
  server.results = "{'autostart': <true>}";  // before it is known where it comes from
  ask(true, "fourth");
  waitUntil([&] { return answers.size() == 4; });
  EXPECT_THAT(answers, ElementsAre("third: yes", "second: no", "first: no", "fourth: yes"));
}

TEST_F(BackgroundPortalTest, SaysWhyItCannotBeAsked) {
  ask(true, "none");
  EXPECT_FALSE(portal->idle());
  waitUntil([&] { return answers.size() == 1; });
  EXPECT_THAT(answers[0], HasSubstr("none: org.freedesktop.DBus.Error.ServiceUnknown"));
  EXPECT_TRUE(portal->idle());
  PortalServer server(address);
  server.refuses = true;
  ask(true, "refused");
  waitUntil([&] { return answers.size() == 2; });
  EXPECT_EQ(answers[1], "refused: org.freedesktop.portal.Error.InvalidArgument: not allowed");
}

}  // namespace
}  // namespace VorselKelp::freedesktop
