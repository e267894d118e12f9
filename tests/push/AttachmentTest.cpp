#include <optional>
#include <string>
#include <vector>

#include "core/CoreContext.h"
#include "push/ImageAttachment.h"
#include "push/ServiceTest.h"

namespace VorselKelp {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing_platform::pngBeginning;
using testing_platform::ServerAnswer;

TEST_F(ServiceTest, TheImageIsAttachedOnTheMainQueue) {
  const auto best = deliver(
      message(R"(,"n":{"body":"B","image":"https://i/pics/p%201.jpeg?w=1","data":{"url":"https://o"}},)"
              R"("t":["https://i/1"])"));
  EXPECT_THAT(service_.urlSession->urls(), ElementsAre("https://i/pics/p%201.jpeg?w=1"));
  EXPECT_EQ(service_.urlSession->request(0).responseLimit, std::size_t{10} << 20);
  ServerAnswer answer = status(200, pngBeginning(64, 64));
  answer.suggestedFilename = "../../evil name.png";
  service_.urlSession->answer(0, answer);
  EXPECT_THAT(handled_, IsEmpty());
  EXPECT_THAT(best->attachments, IsEmpty()) << "the content is the main thread's";
  service_.settle();
  EXPECT_THAT(handled_, ElementsAre(best));
  EXPECT_EQ(best->title + best->body, "TB");
  EXPECT_FALSE(best->categoryIdentifier.empty());
  ASSERT_EQ(best->attachments.size(), 1u);
  const std::string path = best->attachments[0].path;
  EXPECT_EQ(path.find(".."), std::string::npos) << path;
  EXPECT_TRUE(path.ends_with(".png")) << path;
  EXPECT_EQ(*service_.fileManager->readFile(path, 1000), pngBeginning(64, 64));
  EXPECT_THAT(service_.urlSession->urls().back(), "https://i/1");
  EXPECT_TRUE(
      store().mapEntry("vs_url", {"n-1", platform::defaultActionIdentifier}, platform::MapKind::textMapMap));
  const auto printed = serviceLines();
  ASSERT_GE(printed.size(), 5u);
  EXPECT_THAT(std::vector(printed.begin() + 1, printed.begin() + 5),
              ElementsAre("conv", "Download Started", "../../evil name.png", "Download Finished"));

  const auto second = deliver(message(R"(,"n":{"image":"https://i/P.GIF"})"), "n-2");
  service_.urlSession->setRule("/P.GIF", status(200, testing_platform::gifBeginning(1, 1)));
  service_.settle();
  ASSERT_EQ(second->attachments.size(), 1u);
  EXPECT_EQ(service_.console->count("P.GIF"), 1u);
  EXPECT_TRUE(second->attachments[0].path.ends_with("/P.GIF")) << "it has its ending";
  const auto folder = [](const std::string& file) { return file.substr(0, file.rfind('/')); };
  EXPECT_NE(folder(second->attachments[0].path), folder(path));
  ASSERT_TRUE(service_.fileManager->fileExists(folder(path)));
  ImageAttachment(CoreContext::current("a test"), nullptr).discard(best->attachments[0]);
  EXPECT_FALSE(service_.fileManager->fileExists(folder(path))) << "its folder goes with it";
}

TEST_F(ServiceTest, WithoutItsImageTheTextIsDelivered) {
  struct Case {
    const char* url;
    ServerAnswer answer;
    const char* line;
  };
  const Case cases[] = {
      {"https://no host", {}, "URL is not valid"},
      {"", {}, "URL is not valid"},
      {"https://i/x", ServerAnswer::failure("down"), "Image can't be downloaded"},
      {"https://i/x", status(204), "Image can't be downloaded"},
      {"file:///etc/passwd", {}, "Image can't be downloaded"},
      {"/relative.png", {}, "Image can't be downloaded"},
      {"https://i/x", status(200, std::string((10 << 20) + 1, 'x')), "Image can't be downloaded"},
      {"https://i/x", status(200, "<html>"), "Download Finished"},
      {"https://i/x", status(200, ""), "Download Finished"},
      {"https://i/x", status(300, pngBeginning(1, 1)), "Image can't be downloaded"},
      {"https://i/x", status(404, "gone"), "Image can't be downloaded"},
      {"https://i/x", status(200, pngBeginning(100000, 100000)), "Download Finished"},
  };
  for (const auto& c : cases) {
    handled_.clear();
    service_.console->clear();
    const auto best =
        deliver(message(std::string(R"(,"n":{"body":"B","image":")") + c.url + R"("},"t":["https://t/"])"));
    service_.urlSession->setRule("/x", c.answer);
    service_.settle();
    ASSERT_THAT(handled_, ElementsAre(best)) << c.url;
    EXPECT_EQ(best->title + best->body, "TB");
    EXPECT_THAT(best->attachments, IsEmpty());
    EXPECT_EQ(service_.console->count("Download Started"), 1u);
    EXPECT_EQ(service_.console->count(c.line), 1u) << c.url << c.line;
    EXPECT_EQ(service_.urlSession->urls().back(), "https://t/");
  }
}

TEST_F(ServiceTest, AFullDiskCostsTheImageAlone) {
  for (const bool whileItComes : {true, false}) {
    handled_.clear();
    service_.console->clear();
    deliver(message(R"(,"n":{"image":"https://i/x"})"));
    if (whileItComes) device_->files->failWrites(Error{"disk full", 28});
    service_.urlSession->answer(service_.urlSession->unanswered().at(0), status(200, pngBeginning(1, 1)));
    device_->files->failWrites(Error{"disk full", 28});
    service_.settle();
    device_->files->failWrites(std::nullopt);
    ASSERT_EQ(handled_.size(), 1u);
    EXPECT_THAT(handled_[0]->attachments, IsEmpty());
    EXPECT_EQ(handled_[0]->title, "T");
    const auto printed = serviceLines();
    EXPECT_THAT(
        std::vector(printed.begin() + 1, printed.end()),
        ElementsAre("Download Started", "x", "Download Finished", "Image can't be attached: disk full"));
    EXPECT_EQ(attachmentFiles(), 0u);
  }
}

TEST_F(ServiceTest, OfAnImageThatIsNotAttachedNothingStays) {
  auto cutOff = ServerAnswer::failure("the connection broke");
  cutOff.body = pngBeginning(1, 1);
  for (const auto& answer : {cutOff, status(200, "<html>"), status(200, std::string(11 << 20, 'x'))}) {
    handled_.clear();
    VorselKellp::didReceiveNotification(request(message(R"(,"n":{"image":"https://i/x"})"), "n-1"),
                                        std::make_shared<platform::NotificationContent>(), [&](auto content) {
                                          EXPECT_EQ(attachmentFiles(), 0u)
                                              << "gone before the process may end";
                                          handled_.push_back(content);
                                        });
    service_.urlSession->setRule("/x", answer);
    service_.settle();
    ASSERT_EQ(handled_.size(), 1u);
    EXPECT_THAT(handled_[0]->attachments, IsEmpty());
  }
}

}  // namespace
}  // namespace VorselKelp
