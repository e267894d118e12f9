#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "kellp/KellpTest.h"

namespace VorselKelp {
namespace {

using platform::AuthorizationStatus;
using testing::ElementsAre;
using testing::IsEmpty;
using testing_platform::DialogBehaviour;
using testing_platform::ServerAnswer;

class Listener : public VorselKellpDelegate {
 public:
  void notificationTokenChanged(const std::string& token) override { hear("token " + token); }
  void vorselInited(bool success) override { hear(success ? "inited" : "not inited"); }
  void hear(const std::string& event) {
    if (look) look();
    heard.push_back(event);
  }
  std::vector<std::string> heard;
  std::function<void()> look;
};

class RegistrationTest : public KellpTest {
 protected:
  RegistrationTest() { VorselKellp::setVorselDelegate(listener_); }

  void registerToken() {
    const std::uint8_t token[] = {0x00, 0xAB, 0x0F};
    VorselKellp::registerToken(token);
    EXPECT_EQ(center().authorizationRequests().size(), asked_) << "asked on the main queue";
    app_.mainQueue->runUntilIdle();
    asked_ = center().authorizationRequests().size();
  }
  std::vector<std::string> heard() { return std::exchange(listener_->heard, {}); }
  testing_platform::MemoryNotificationCenter& center() { return *device_->notificationCenter; }

  std::shared_ptr<Listener> listener_ = std::make_shared<Listener>();
  std::size_t asked_ = 0;
};

TEST_F(RegistrationTest, ANewTokenIsReportedUntilTheServerTakesIt) {
  start();
  for (const auto& refusal : {status(200), status(500), ServerAnswer::failure("down")}) {
    registerToken();
    EXPECT_THAT(heard(), ElementsAre("token 00ab0f"));
    app_.urlSession->answer(app_.urlSession->requests().size() - 1, refusal);
    EXPECT_THAT(heard(), ElementsAre("not inited"));
    EXPECT_FALSE(text("vs_tok"));
  }
  app_.urlSession->setRule("/v2/users", status(201));
  listener_->look = [&] {
    EXPECT_EQ(bodies("/v2/users").size(), listener_->heard.empty() ? 3u : 4u) << "told before it is reported";
    EXPECT_FALSE(text("vs_tok")) << "told before it is stored";
  };
  registerToken();
  app_.settle();
  listener_->look = nullptr;
  EXPECT_THAT(heard(), ElementsAre("token 00ab0f", "inited"));
  EXPECT_EQ(text("vs_tok"), "00ab0f");
  EXPECT_EQ(bodies("/v2/users").size(), 4u);
  EXPECT_EQ(occurrences(bodies("/v2/users")[0], R"("token":"00ab0f")"), 1u);

  registerToken();
  EXPECT_THAT(heard(), ElementsAre("inited"));
  EXPECT_EQ(bodies("/v2/users").size(), 4u);
  const std::uint8_t other[] = {0xFF};
  VorselKellp::registerToken(other);
  app_.settle();
  EXPECT_THAT(heard(), ElementsAre("token ff", "inited"));
  EXPECT_EQ(text("vs_tok"), "ff");
  EXPECT_EQ(app_.console->count("00ab0f"), 5u);
  EXPECT_THAT(center().authorizationRequests(), testing::Each(7u));
}

TEST_F(RegistrationTest, ARefusedPermissionIsSilent) {
  start();
  center().setDialogBehaviour(DialogBehaviour::denies);
  const auto reports = codes();
  registerToken();
  app_.settle();
  EXPECT_THAT(heard(), IsEmpty());
  EXPECT_THAT(bodies("/v2/users"), IsEmpty());
  EXPECT_EQ(codes(), reports);
}

TEST_F(RegistrationTest, WithPushOffOnlyTheWaitingFlagMoves) {
  start(false);
  registerToken();
  EXPECT_FALSE(store().object("vs_wd"));
  for (const bool waiting : {true, false}) {
    store().setObject("vs_wd", {waiting});
    registerToken();
    EXPECT_EQ(stored<bool>("vs_wd"), true);
  }
  EXPECT_TRUE(printed("00ab0f"));
  EXPECT_THAT(center().authorizationRequests(), IsEmpty());
  EXPECT_THAT(bodies("/v2/users"), IsEmpty());
  EXPECT_THAT(heard(), IsEmpty());
}

TEST_F(RegistrationTest, WithoutASessionTheProcessStops) {
  VorselKellp::setValueFor(group);
  store().setObject("vs_push", {true});
  EXPECT_DEATH(registerToken(), "Fatal error: ");
  store().setObject("vs_tok", {std::string("00ab0f")});
  registerToken();
  EXPECT_THAT(heard(), ElementsAre("inited")) << "a known token needs none";
}

TEST_F(RegistrationTest, APermissionThatIsGrantedRegistersOnce) {
  start();
  VorselKellp::askForNotificationsPermission();
  EXPECT_TRUE(app_.mainQueue->runOne());
  EXPECT_EQ(app_.application->registrations(), 0u) << "granted, and to be registered on the main queue";
  app_.settle();
  EXPECT_EQ(app_.application->registrations(), 1u);
  VorselKellp::initialize(VorselBuilder("key", group).push().build());
  app_.settle();
  EXPECT_EQ(app_.application->registrations(), 2u) << "start-up registers when permitted";
  VorselKellp::askForNotificationsPermission();
  app_.settle();
  EXPECT_EQ(app_.application->registrations(), 2u) << "start-up has asked already";
}

TEST_F(RegistrationTest, AskingWithAControllerDependsOnTheDecision) {
  const auto controller = std::make_shared<ui::ViewController>();
  const std::pair<int, std::size_t> cases[] = {{1, 0}, {2, 0}, {3, 0}, {4, 0}, {7, 0}, {0, 1}};
  for (const auto& [decision, requests] : cases) {
    center().setAuthorizationStatus(static_cast<AuthorizationStatus>(decision));
    VorselKellp::askForNotificationPermissionWith(controller);
    app_.settle();
    EXPECT_EQ(center().authorizationRequests().size(), requests) << decision;
  }
  EXPECT_EQ(controller.use_count(), 1);
}

TEST_F(RegistrationTest, ADialogThatStaysOpenIsAnsweredLater) {
  start();
  center().setDialogBehaviour(DialogBehaviour::leavesOpen);
  VorselKellp::askForNotificationsPermission();
  registerToken();
  app_.settle();
  EXPECT_THAT(heard(), IsEmpty());
  EXPECT_TRUE(center().answerDialog(true));
  app_.settle();
  EXPECT_THAT(heard(), ElementsAre("token 00ab0f"));
  EXPECT_EQ(app_.application->registrations(), 1u);
}

}  // namespace
}  // namespace VorselKelp
