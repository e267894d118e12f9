#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "VorselKelpTesting/FaultyPlatform.h"
#include "VorselKelpTesting/MemoryPlatform.h"

namespace VorselKelp::testing_platform {
namespace {

using platform::DefaultsValue;
using platform::MapKind;
using testing::ElementsAre;

class FaultyPlatformTest : public testing::Test {
 protected:
  void disturb(FaultRule rule) {
    plan_ = std::make_shared<FaultPlan>(std::move(rule));
    platform_ = faulty(*memory_.platform(), plan_);
  }

  MemoryPlatform memory_;
  std::shared_ptr<FaultPlan> plan_;
  std::shared_ptr<platform::Platform> platform_;
};

TEST_F(FaultyPlatformTest, ATransactionIsUndoneWhereverItFails) {
  memory_.standardDomain->setObject("old", {std::string("value")});
  memory_.standardDomain->setMapEntry("map", {"a"}, MapKind::textMap, {std::string("1")});
  const auto before = memory_.standardDomain->contents();
  for (std::size_t at = 1; at <= 6; ++at) {
    for (const Fault fault : {Fault::refusal, Fault::stop}) {
      disturb({.at = at, .fault = fault});
      const auto store = platform_->userDefaults->standard();
      bool ran = false;
      const bool committed = store->transact([&] {
        store->setObject("new", {true});
        store->removeObject("old");
        store->transact([&] { store->setMapEntry("map", {"b"}, MapKind::textMap, {std::string("2")}); });
        store->removeMapEntry("map", {"a"}, MapKind::textMap);
        ran = true;
      });
      EXPECT_TRUE(ran);
      EXPECT_FALSE(committed);
      EXPECT_EQ(memory_.standardDomain->contents(), before) << "call " << at;
      store->setObject("after", {true});
      EXPECT_EQ(memory_.standardDomain->object("after").has_value(), fault == Fault::refusal);
      memory_.standardDomain->removeObject("after");
    }
  }
  disturb({.at = 2});
  EXPECT_EQ(platform_->userDefaults->suite(""), platform_->userDefaults->standard());
}

TEST_F(FaultyPlatformTest, AFileThatIsRefusedIsGoneAndThatOfAKilledProcessStays) {
  const auto write = [this] {
    auto writer = platform_->fileManager->makeWriter("/d");
    return writer && (*writer)->append("ab") && (*writer)->commit("/d/f");
  };
  for (std::size_t at = 1; at <= 3; ++at) {
    disturb({.at = at});
    EXPECT_FALSE(write());
    EXPECT_TRUE(memory_.device->files->paths().empty());
  }
  disturb({.at = 3, .fault = Fault::stop});
  EXPECT_FALSE(write());
  EXPECT_EQ(memory_.device->files->paths().size(), 1u);
  EXPECT_FALSE(memory_.device->files->exists("/d/f"));
  disturb({.only = FaultPoint::fileLock});
  EXPECT_TRUE(write());
  EXPECT_EQ(platform_->fileManager->lock("/d/l"), nullptr);
  EXPECT_NE(platform_->fileManager->lock("/d/l"), nullptr);
}

TEST_F(FaultyPlatformTest, RequestsFailAsTheRuleSays) {
  std::vector<std::string> answers;
  const auto send = [&](FaultRule rule) {
    disturb(std::move(rule));
    memory_.urlSession->setRule(
        "*", {.status = 200, .body = "b", .headers = {}, .suggestedFilename = {}, .error = {}});
    platform::URLRequest request;
    request.url = "https://a/b";
    platform_->urlSession->send(request, [&](const platform::URLResult& result) {
      answers.push_back(result.error ? result.error->description
                                     : std::to_string(result.response->statusCode));
    });
    memory_.settle();
  };
  send({.at = 2});
  send({.error = {"down", -1}});
  send({.fault = Fault::errorAnswer});
  EXPECT_THAT(answers, ElementsAre("200", "down", "500"));
  send({.fault = Fault::lateAnswer});
  EXPECT_EQ(answers.size(), 3u);
  EXPECT_EQ(plan_->releaseAnswers(), 1u);
  EXPECT_EQ(answers.back(), "200");
  send({.fault = Fault::noAnswer});
  EXPECT_EQ(answers.size(), 4u);
  plan_->end();
  EXPECT_EQ(answers.back(), "cancelled");
  send({.fault = Fault::stop});
  plan_->end();
  EXPECT_EQ(answers.size(), 5u) << "the dead hear nothing";
}

TEST_F(FaultyPlatformTest, CountsCallsByKindAndGoesQuietAfterAStop) {
  disturb({.at = 2, .fault = Fault::stop});
  bool ran = false;
  platform_->mainQueue->async([&] { ran = true; });
  platform_->notificationCenter->setNotificationCategories({{"c", {}, false}});
  platform_->console->print("before");
  platform_->notificationCenter->getNotificationCategories([](const auto&) { FAIL(); });
  platform_->console->print("after");
  platform_->application->setBadge(1);
  memory_.settle();
  EXPECT_TRUE(plan_->stopped());
  EXPECT_FALSE(ran);
  EXPECT_THAT(plan_->calls(), ElementsAre(FaultPoint::notification, FaultPoint::categories));
  EXPECT_THAT(memory_.console->texts(), ElementsAre("before"));
  EXPECT_FALSE(memory_.application->badge());
  EXPECT_EQ(memory_.device->notificationCenter->categories().size(), 1u);
}

}  // namespace
}  // namespace VorselKelp::testing_platform
