#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelpTesting/MemoryPlatform.h"

namespace VorselKelp::testing_platform {
namespace {

using platform::LifeCycleObserver;
using platform::URLRequest;
using platform::URLResult;
using testing::ElementsAre;

URLRequest get(const std::string& url) {
  URLRequest request;
  request.url = url;
  return request;
}

TEST(MemoryURLSession, AnswersWhenTold) {
  MemoryURLSession session;
  std::vector<URLResult> results;
  const auto keep = [&](URLResult result) { results.push_back(std::move(result)); };
  session.send(get("http://a.example/x/pic.png?q"), keep);
  session.send(get("https://a.example/y"), keep);
  EXPECT_TRUE(results.empty());
  ServerAnswer answer;
  answer.body = "b";
  EXPECT_TRUE(session.answer(1, answer));
  EXPECT_FALSE(session.answer(1, answer));
  EXPECT_FALSE(session.answer(2, answer));
  EXPECT_THAT(session.unanswered(), ElementsAre(0u));
  session.answer(0, ServerAnswer::failure("down", 7));
  ASSERT_EQ(results.size(), 2u);
  EXPECT_EQ(results[0].body, "b");
  EXPECT_EQ(results[0].response->suggestedFilename, "y");
  EXPECT_FALSE(results[1].response);
  EXPECT_EQ(results[1].error->code, 7);
}

TEST(MemoryURLSession, AnswersAsARealOneWould) {
  struct Case {
    const char* url;
    int status;
    bool discard;
    std::size_t limit;
    bool response;
    bool body;
  };
  const Case cases[] = {
      {"http://h/p", 200, false, 4, true, true},  {"http://h/p", 200, false, 3, false, false},
      {"http://h/p", 204, false, 4, true, false}, {"http://h/p", 304, false, 4, true, false},
      {"http://h/p", 500, true, 3, true, false},  {"file:///etc/passwd", 200, false, 4, false, false},
      {"relative", 200, false, 4, false, false},  {"", 200, false, 4, false, false}};
  for (const auto& c : cases) {
    MemoryURLSession session;
    std::optional<URLResult> result;
    auto request = get(c.url);
    request.discardBody = c.discard;
    request.responseLimit = c.limit;
    session.send(request, [&](URLResult r) { result = std::move(r); });
    ServerAnswer answer;
    answer.status = c.status;
    answer.body = "1234";
    session.setRule("/p", answer);
    EXPECT_EQ(session.answerByRules(), 1u);
    ASSERT_TRUE(result) << c.url;
    EXPECT_EQ(result->response.has_value(), c.response) << c.url << c.status;
    EXPECT_EQ(result->body.has_value(), c.body) << c.url << c.status;
    EXPECT_EQ(result->error.has_value(), !c.response) << c.url << c.status;
  }
}

TEST(MemoryURLSession, AConsumerGetsTheBodyBeforeTheAnswer) {
  struct Case {
    ServerAnswer answer;
    bool refuse;
    const char* taken;
    bool succeeds;
  };
  ServerAnswer whole, broken = ServerAnswer::failure("cut off", 18), large, none;
  whole.body = broken.body = none.body = "1234";
  large.body = "123456";
  none.status = 204;
  const Case cases[] = {{whole, false, "1234", true},
                        {whole, true, "1234", false},
                        {broken, false, "1234", false},
                        {large, false, "12345", false},
                        {none, false, "", true}};
  for (const auto& c : cases) {
    MemoryURLSession session;
    auto request = get("http://h/p");
    request.responseLimit = 5;
    const auto taken = std::make_shared<std::string>();
    request.bodyConsumer = [taken, refuse = c.refuse](std::string_view piece) -> Status {
      *taken += piece;
      return refuse ? Status(Error{"refused"}) : Done{};
    };
    bool answered = false;
    session.send(std::exchange(request, {}), [&](const URLResult& result) {
      answered = true;
      EXPECT_EQ(*taken, c.taken);
      EXPECT_EQ(taken.use_count(), 1) << "the consumer is gone";
      EXPECT_EQ(result.response.has_value(), c.succeeds);
      EXPECT_EQ(result.body.value_or("none"), c.succeeds && c.answer.status == 200 ? "" : "none");
    });
    session.answer(0, c.answer);
    EXPECT_TRUE(answered);
  }
}

TEST(MemoryURLSession, RulesFollowWhatTheAnswersSendAndLeaveTheRestWaiting) {
  MemoryURLSession session;
  session.setRule("/first", {});
  session.setRule("/second", {});
  int answered = 0;
  session.send(get("http://h/first?a=b"), [&](const URLResult&) {
    session.send(get("http://h/second"), [&](const URLResult&) { ++answered; });
  });
  session.send(get("http://h/other"), [&](const URLResult&) { ++answered; });
  EXPECT_EQ(session.answerByRules(), 2u);
  EXPECT_EQ(answered, 1);
  EXPECT_THAT(session.unanswered(), ElementsAre(1u));
}

TEST(MemoryURLSession, CancelsWhatIsLeft) {
  std::vector<int> codes;
  {
    MemoryURLSession session;
    session.send(get("http://h/"), [&](const URLResult& result) {
      codes.push_back(result.error->code);
      session.send(get("http://h/again"), [&](const URLResult& last) { codes.push_back(last.error->code); });
    });
  }
  EXPECT_THAT(codes, ElementsAre(-999, -999));
}

class Listener final : public LifeCycleObserver {
 public:
  Listener(std::string name, std::vector<std::string>& heard) : name_(std::move(name)), heard_(heard) {}
  void appBecameActive() override { heard_.push_back(name_ + "+"); }
  void appBecameInactive() override { heard_.push_back(name_ + "-"); }
  void appBecameBackground() override { heard_.push_back(name_ + "b"); }
  void appWillTerminate() override { heard_.push_back(name_ + "t"); }

 private:
  std::string name_;
  std::vector<std::string>& heard_;
};

TEST(MemoryApplication, TellsItsObserversInOrderAndWeakly) {
  std::vector<std::string> heard;
  MemoryApplication application(ProcessKind::application);
  const auto a = std::make_shared<Listener>("a", heard);
  auto b = std::make_shared<Listener>("b", heard);
  for (const auto& one : {a, b, a}) {
    application.addObserver(std::weak_ptr<LifeCycleObserver>(one));
  }
  application.becomeActive();
  b.reset();
  application.resignActive();
  application.enterBackground();
  application.terminate();
  EXPECT_THAT(heard, ElementsAre("a+", "b+", "a-", "ab", "at"));
}

TEST(MemoryApplication, BackgroundTasksExpireUnlessTheyEnd) {
  MemoryApplication application(ProcessKind::application);
  int expired = 0;
  const auto ended = application.beginBackgroundTask("ended", [&] { ++expired; });
  platform::BackgroundTask running = platform::invalidBackgroundTask;
  running = application.beginBackgroundTask("running", [&] {
    ++expired;
    application.endBackgroundTask(running);
  });
  application.endBackgroundTask(ended);
  application.endBackgroundTask(ended);
  EXPECT_THAT(application.backgroundTasks(), ElementsAre("running"));
  application.expireBackgroundTasks();
  EXPECT_EQ(expired, 1);
  EXPECT_TRUE(application.backgroundTasks().empty());
  application.refuseBackgroundTasks(true);
  EXPECT_EQ(application.beginBackgroundTask("x", nullptr), platform::invalidBackgroundTask);
}

TEST(MemoryApplication, AnExtensionHasNone) {
  std::vector<std::string> heard;
  MemoryApplication application(ProcessKind::extension);
  const auto listener = std::make_shared<Listener>("a", heard);
  application.addObserver(std::weak_ptr<LifeCycleObserver>(listener));
  application.becomeActive();
  application.registerForRemoteNotifications();
  EXPECT_TRUE(heard.empty());
  EXPECT_EQ(application.registrations(), 0u);
  EXPECT_EQ(application.beginBackgroundTask("x", nullptr), platform::invalidBackgroundTask);
}

TEST(MemoryFileManager, FilesFoldersAndLimits) {
  MemoryPlatform app;
  app.device->addGroup("../../etc");
  auto& files = *app.fileManager;
  EXPECT_FALSE(files.containerPath("unknown"));
  const auto container = files.containerPath("../../etc");
  ASSERT_TRUE(container);
  EXPECT_EQ(container->find(".."), std::string::npos);
  ASSERT_TRUE(files.writeFile(*container + "/f/./a", "12345"));
  EXPECT_EQ(*files.readFile(*container + "/f//a", 5), "12345");
  EXPECT_FALSE(files.readFile(*container + "/f/a", 4));
  EXPECT_FALSE(files.readFile(*container + "/f", 99));
  EXPECT_FALSE(files.writeFile(*container + "/f", "a folder is there"));
  EXPECT_FALSE(files.writeFile(*container + "/f/a/b", "a file is there"));
  EXPECT_FALSE(files.writeFile("relative", ""));
  EXPECT_TRUE(files.fileExists(*container + "/f"));
  EXPECT_TRUE(files.removeItem(*container + "/f"));
  EXPECT_TRUE(files.removeItem(*container + "/f"));
  EXPECT_FALSE(files.fileExists(*container + "/f/a"));
  EXPECT_TRUE(files.fileExists(files.temporaryDirectory()));
  {
    auto writer = files.makeWriter(*container + "/w");
    ASSERT_TRUE(writer && (*writer)->append("ab") && (*writer)->append("c"));
    EXPECT_EQ(*(*writer)->read(1, 9), "bc");
    EXPECT_EQ(*(*writer)->read(9, 9), "");
    EXPECT_EQ(app.device->files->paths().size(), 1u) << "under its passing name";
    app.device->files->failWrites(Error{"for a moment", 5});
    EXPECT_FALSE((*writer)->append("d"));
    app.device->files->failWrites(std::nullopt);
    EXPECT_EQ((*writer)->commit(*container + "/w/f").error().code, 5);
    auto second = files.makeWriter(*container + "/w");
    ASSERT_TRUE(second && (*second)->append("whole") && (*second)->commit(*container + "/w/f"));
  }
  EXPECT_THAT(app.device->files->paths(), ElementsAre(*container + "/w/f"));
  app.device->files->failWrites(Error{"disk full", 28});
  EXPECT_EQ(files.makeWriter(*container).error().code, 28);
  EXPECT_EQ(files.writeFile(*container + "/x", "").error().code, 28);
  EXPECT_EQ(files.lock(*container + "/lock"), nullptr);
}

TEST(HeaderImageDecoder, ReadsSizesAndRefusesWhatIsNoPicture) {
  HeaderImageDecoder decoder;
  const std::pair<std::string, std::string> pictures[] = {
      {pngBeginning(640, 480), "png"}, {jpegBeginning(640, 480), "jpg"}, {gifBeginning(640, 480), "gif"}};
  for (const auto& [bytes, extension] : pictures) {
    const auto info = decoder.inspect(bytes, 640 * 480);
    ASSERT_TRUE(info) << extension;
    EXPECT_EQ(info->width, 640);
    EXPECT_EQ(info->height, 480);
    EXPECT_EQ(info->fileExtension, extension);
    EXPECT_FALSE(decoder.inspect(bytes, 640 * 480 - 1)) << extension;
    EXPECT_FALSE(decoder.inspect(bytes.substr(0, 9), 1 << 30)) << extension;
  }
  EXPECT_FALSE(decoder.inspect(pngBeginning(0xFFFFFFFF, 0xFFFFFFFF), INT64_MAX));
  EXPECT_FALSE(decoder.inspect(pngBeginning(0, 1), INT64_MAX));
  for (const char* bytes : {"", "<html>", "\xff\xd8\xff", "GIF8"}) EXPECT_FALSE(decoder.inspect(bytes, 1000));
}

TEST(DeterministicRandom, RepeatsItselfAndStaysInBounds) {
  DeterministicRandom a(7);
  DeterministicRandom b(7);
  std::vector<int> seen(10);
  for (int i = 0; i < 1000; ++i) {
    const auto number = a.below(10);
    ASSERT_LT(number, 10u);
    EXPECT_EQ(number, b.below(10));
    ++seen[number];
  }
  for (const int count : seen) EXPECT_GT(count, 50);
}

}  // namespace
}  // namespace VorselKelp::testing_platform
