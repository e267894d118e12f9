#include "VorselKelpGtk/Carousel.h"
#include "VorselKelpPosix/PixbufImageDecoder.h"
#include "content_ext/CarouselTest.h"
#include "gtk/support/ScreenTest.h"
#include "posix/support/PictureFiles.h"

namespace VorselKelp {
namespace {

using testing::Contains;
using testing::ElementsAre;

std::string plainPng(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
  constexpr int side = 20;
  std::vector<std::uint8_t> pixels;
  for (int i = 0; i < side * side; ++i) pixels.insert(pixels.end(), {red, green, blue});
  return testing_support::pngFile(side, side, 3, pixels);
}

/// The carousel in a window, with real pictures, on a network that the test plays.
class CarouselScreenTest : public CarouselTest, protected gtk::TestScreen {
 protected:
  CarouselScreenTest() {
    extension_.platform()->imageDecoder = posix::makeImageDecoder();
    for (const char* name : {"left2.png", "right2.png"}) {
      extension_.bundle->setResource(name, plainPng(255, 255, 255));
    }
    controller_->view()->frame = ui::Rect{{0, 0}, {width, height}};
    controller_->view()->backgroundColor = ui::Color::white();
  }

  std::shared_ptr<VorselNotificationView> open(const std::string& json) {
    auto view = make(json);
    show(std::static_pointer_cast<ui::ViewController>(controller_));
    extension_.settle();
    settle();
    return view;
  }
};

TEST_F(CarouselScreenTest, IsPagedAndOpenedWithTheMouse) {
  const auto view = open(carousel());
  answer("https://i/0", status(200, plainPng(0, 0, 255)));
  answer("https://i/1", status(200, plainPng(255, 0, 0)));
  settle();
  const auto image = boundsOf(*view->imageView);
  const double centre = image.origin.y + image.size.height / 2;
  EXPECT_EQ(pixel(width / 2, centre), "#0000ff");
  newUrls();

  click(*view->rightButton);
  waitUntil([&] { return view->position() == 1; });
  extension_.settle();
  settle();
  EXPECT_EQ(view->titleLabel->text.get(), "T1");
  EXPECT_EQ(pixel(width / 2, centre), "#ff0000");
  EXPECT_THAT(newUrls(), ElementsAre("https://t/1a", "https://t/1b"));

  click(*view->leftButton);
  waitUntil([&] { return view->position() == 0; });
  click(*view->leftButton);
  waitUntil([&] { return view->position() == 2; });
  newUrls();
  click(width / 2, centre);
  waitUntil([&] { return !controller_->context->opened.empty(); });
  EXPECT_THAT(controller_->context->opened, ElementsAre("app://open/2"));
  EXPECT_THAT(newUrls(), Contains("https://c/2"));
}

TEST_F(CarouselScreenTest, StandsWhereItsLayoutCodeSays) {
  const auto rect = [&](const ui::View& view) { return boundsOf(const_cast<ui::View&>(view)); };
  const auto bottom = [](const ui::Rect& r) { return r.origin.y + r.size.height; };
  struct Gaps {
    const char* code;
    double top, first, second;
  };
  for (const auto& [code, top, first, second] :
       {Gaps{"0", 5, 5, 5}, Gaps{"1", 10, 10, 10}, Gaps{"2", 5, 5, 5}}) {
    const auto view = open(carousel(std::string(R"(,"el":)") + code));
    const auto title = rect(*view->titleLabel);
    const auto body = rect(*view->subtitleLabel);
    const auto image = rect(*view->imageView);
    const std::vector<ui::Rect> stack = *code == '0'   ? std::vector{title, body, image}
                                        : *code == '1' ? std::vector{title, image, body}
                                                       : std::vector{image, title, body};
    EXPECT_NEAR(stack[0].origin.y, top, 0.5) << code;
    EXPECT_NEAR(stack[1].origin.y, bottom(stack[0]) + first, 0.5) << code;
    EXPECT_NEAR(stack[2].origin.y, bottom(stack[1]) + second, 0.5) << code;
    EXPECT_NEAR(bottom(stack[2]), height - 10, 0.5) << code;
    for (const auto& each : stack) {
      EXPECT_NEAR(each.origin.x, 10, 0.5) << code;
      EXPECT_NEAR(each.size.width, width - 20, 0.5) << code;
    }
    EXPECT_GT(image.size.height, height / 2) << "the picture takes what the texts leave";
    expectPlaced(*view->conversionButton, {{0, 0}, {width, height}});
    const double centre = image.origin.y + image.size.height / 2;
    expectPlaced(*view->leftButton, {{10, centre - 20}, {40, 40}});
    expectPlaced(*view->rightButton, {{width - 50, centre - 20}, {40, 40}});
  }
}

/// Their letters come from other fonts, which are higher or lower than the one for Latin.
TEST_F(CarouselScreenTest, RowsOfEveryScriptAreAboutAsHighAsLatinOnes) {
  double latin = 0;
  for (const char* text :
       {"Storm over the bay", "沿岸に暴風警報", "해안에 폭풍 경보", "तूफान की चेतावनी", "เตือนพายุชายฝั่ง"}) {
    auto json = carousel();
    for (const char* name : {"\"T0\"", "\"B0\""})
      json.replace(json.find(name), 4, '"' + std::string(text) + '"');
    const auto view = open(json);
    ASSERT_EQ(view->titleLabel->text.get(), text);
    const auto rows = boundsOf(*view->titleLabel).size.height + boundsOf(*view->subtitleLabel).size.height;
    if (latin == 0) latin = rows;
    EXPECT_LE(rows, 1.6 * latin) << text;
    EXPECT_GT(boundsOf(*view->imageView).size.height, height / 2) << text;
  }
}

TEST_F(CarouselScreenTest, IsAWidgetOfAnApplicationsOwn) {
  const auto bad =
      gtk::carousel(delivered(R"({"p":[{"o":{}}],"isMultiple":true})"), [](const std::string&) {});
  EXPECT_FALSE(bad.ok()) << "what stops an extension must not stop an application";
  std::vector<std::string> opened;
  const auto widget =
      gtk::carousel(delivered(carousel()), [&](const std::string& url) { opened.push_back(url); });
  ASSERT_TRUE(widget.ok());
  show(*widget);
  newUrls();
  press({"Tab", "Tab", "Return"});  // the arrow back, the arrow on
  waitUntil([&] { return extension_.urlSession->urls().size() >= 5; });
  EXPECT_THAT(newUrls(), ElementsAre("https://t/1a", "https://t/1b"));
  press({"Tab", "space"});  // the page
  waitUntil([&] { return !opened.empty(); });
  EXPECT_THAT(opened, ElementsAre("app://open/1"));
  closeWindow();
}

}  // namespace
}  // namespace VorselKelp
