#include "content_ext/CarouselTest.h"

namespace VorselKelp {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

constexpr const char* groupIdentifier = "group.com.example.app.content.vorselKellp";
constexpr const char* arrowUrl = "https://a/left/1";

class ArrowTest : public CarouselTest {
 protected:
  ArrowTest() { device_->addGroup(groupIdentifier); }
  std::shared_ptr<VorselNotificationView> withArrow(const std::string& text = arrowUrl) {
    return make(carousel(R"(,"ap":")" + text + "\""));
  }
  [[nodiscard]] std::string container() const { return *device_->files->containerOf(groupIdentifier); }
};

TEST_F(ArrowTest, AnArrowIsDownloadedOnceAndKeptForLaterNotifications) {
  auto view = withArrow();
  EXPECT_EQ(widthOf(view->rightButton->backgroundImage), 9) << "no URL, so the built-in one";
  EXPECT_THAT(
      extensionLines(),
      ElementsAre("No imagefound in documents from <VorselNotificationView: frame = (0 0; 320 240)>"));
  answer(arrowUrl, picture(30, 30));
  EXPECT_EQ(widthOf(view->leftButton->backgroundImage), 30);
  EXPECT_THAT(device_->files->paths(), ElementsAre(container() + "/https:/a/left/1.jpg"));
  newUrls();
  view = withArrow();
  EXPECT_EQ(view->leftButton->backgroundImage.get(), nullptr) << "set through the main queue";
  extension_.settle();
  EXPECT_EQ(widthOf(view->leftButton->backgroundImage), 30);
  EXPECT_THAT(newUrls(), Not(Contains(arrowUrl)));
  EXPECT_THAT(extensionLines(), SizeIs(1));

  const std::string longest = "https://a/" + std::string(255, 'a') + "/1";
  view = withArrow(longest);
  answer(longest, picture(30, 30));
  EXPECT_THAT(device_->files->paths(), SizeIs(2)) << "a folder's name may have 255 bytes";
}

TEST_F(ArrowTest, AKeptFileThatIsNoPictureIsReplaced) {
  const std::string path = container() + "/" + arrowUrl + ".jpg";
  ASSERT_TRUE(device_->files->write(path, "rubbish"));
  const auto view = withArrow();
  answer(arrowUrl, picture(30, 30));
  EXPECT_EQ(widthOf(view->leftButton->backgroundImage), 30);
  EXPECT_EQ(*device_->files->read(path), testing_platform::pngBeginning(30, 30));
}

TEST_F(ArrowTest, FailuresArePrintedAndKeepNothing) {
  for (const auto& bad : {testing_platform::ServerAnswer::failure("offline"), status(200, "no picture"),
                          status(404, testing_platform::pngBeginning(1, 1)), status(204)}) {
    const auto view = withArrow();
    extension_.console->clear();
    answer(arrowUrl, bad);
    EXPECT_EQ(view->leftButton->backgroundImage.get(), nullptr);
    EXPECT_THAT(extensionLines(), ElementsAre(StartsWith("FAILED TO SAVE IMAGE ")));
  }
  EXPECT_THAT(device_->files->paths(), IsEmpty());
  device_->files->failWrites(Error{"disk full"});
  const auto view = withArrow();
  answer(arrowUrl, picture(30, 30));
  EXPECT_THAT(extensionLines(), Contains("FAILED TO SAVE IMAGE disk full"));
  EXPECT_EQ(widthOf(view->leftButton->backgroundImage), 30) << "shown all the same";
  (void)withArrow("https://no host");
  EXPECT_THAT(extensionLines(), Contains("FAILED TO SAVE IMAGE URL is not valid"));
  const auto last = withArrow();
  extension_.bundle->setMain("CFBundleIdentifier", "com.in.no.group");
  answer(arrowUrl, picture(31, 31));
  EXPECT_EQ(extensionLines().back(), "Cant find app gorups directory");
  EXPECT_EQ(widthOf(last->leftButton->backgroundImage), 31);
}

TEST_F(ArrowTest, HostileNamesReachNoFile) {
  const std::string outside = "/containers/secret.jpg";
  ASSERT_TRUE(device_->files->write(outside, testing_platform::pngBeginning(66, 66)));
  const std::string folder = container();
  const std::string kept = folder.substr(folder.rfind('/') + 1);
  for (const std::string& text : {std::string("https://h/../../../secret"), std::string("../secret"),
                                  std::string("../") + kept + "/x", "https://h/" + std::string(10000, 'a'),
                                  "https://h/" + std::string(256, 'a') + "/x", "https://h" + []() {
                                    std::string deep;
                                    for (int i = 0; i < 3000; ++i) deep += "/a";
                                    return deep;
                                  }()}) {
    extension_.console->clear();
    const auto view = withArrow(text);
    extension_.urlSession->setRule("*", picture(30, 30));
    extension_.settle();
    EXPECT_NE(widthOf(view->leftButton->backgroundImage), 66) << text.substr(0, 40);
    EXPECT_THAT(extensionLines(), Contains(StartsWith("FAILED TO SAVE IMAGE "))) << text.substr(0, 40);
    EXPECT_THAT(device_->files->paths(), ElementsAre(outside)) << text.substr(0, 40);
  }
  for (const char* text : {"", "/containers/secret", "..", "a\\u0000b"}) {
    extension_.console->clear();
    (void)withArrow(text);
    extension_.settle();
    EXPECT_THAT(extensionLines(), Contains(StartsWith("FAILED TO SAVE IMAGE "))) << text;
    EXPECT_THAT(device_->files->paths(), ElementsAre(outside)) << text;
  }
}

TEST_F(ArrowTest, WithoutAContainerNothingIsShown) {
  testing_platform::MemoryPlatform other(device_, testing_platform::ProcessKind::extension, "com.other");
  VorselKellp::install(other.platform());
  const auto view = withArrow();
  EXPECT_THAT(other.urlSession->urls(), Not(Contains(arrowUrl)));
  EXPECT_EQ(view->leftButton->backgroundImage.get(), nullptr);
  other.bundle->setMain("CFBundleIdentifier", std::nullopt);
  EXPECT_DEATH(withArrow(), "Fatal error: VorselKelp/VorselNotificationUI: .*CFBundleIdentifier");
}

TEST_F(ArrowTest, AnArrowThatComesAfterItsViewHasGoneIsKeptForTheNext) {
  withArrow()->removeFromSuperview();
  answer(arrowUrl, picture(30, 30));
  EXPECT_THAT(device_->files->paths(), SizeIs(1));
  const auto next = withArrow();
  extension_.settle();
  EXPECT_EQ(widthOf(next->leftButton->backgroundImage), 30);
}

TEST_F(ArrowTest, AMissingResourceIsSaid) {
  extension_.bundle->setResource("left2.png", std::nullopt);
  extension_.bundle->setResource("right2.png", "rubbish");
  const auto view = make();
  EXPECT_EQ(view->leftButton->backgroundImage.get(), nullptr);
  EXPECT_THAT(extensionLines(),
              ElementsAre("No image left2.png: not installed", StartsWith("No image right2")));
}

}  // namespace
}  // namespace VorselKelp
