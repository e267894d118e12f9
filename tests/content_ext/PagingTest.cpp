#include "content_ext/CarouselTest.h"

namespace VorselKelp {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PagingTest : public CarouselTest {
 protected:
  static void act(VorselNotificationView& view, const std::string& action) {
    platform::NotificationResponse response;
    response.actionIdentifier = action;
    view.handleNotificationAction(response);
  }
  static std::string texts(const VorselNotificationView& view) {
    return view.titleLabel->text.get().value_or("-") + view.subtitleLabel->text.get().value_or("-");
  }
};

TEST_F(PagingTest, ArrowsWrapAroundInBothDirections) {
  const auto view = shown();
  EXPECT_EQ(texts(*view), "T0B0");
  for (const auto* expected : {"T1B1", "T2B2", "T0B0"}) {
    view->rightButton->tap();
    EXPECT_EQ(texts(*view), expected);
  }
  for (const auto* expected : {"T2B2", "T1B1", "T0B0"}) {
    view->leftButton->tap();
    EXPECT_EQ(texts(*view), expected);
  }
  act(*view, "prev");
  EXPECT_EQ(view->position(), 2);
  act(*view, "next");
  EXPECT_EQ(view->position(), 0);
  act(*view, "other");
  EXPECT_EQ(texts(*view), "T0B0");
  EXPECT_EQ(view->presentedNotification(), view->notifications()->p->front());
}

TEST_F(PagingTest, AbsentTextsShowNothing) {
  const auto view = shown(R"({"p":[{"o":{"image":"https://i/0"}}],"isMultiple":true})");
  EXPECT_EQ(texts(*view), "--");
  view->rightButton->tap();
  view->leftButton->tap();
  EXPECT_EQ(view->position(), 0) << "the only message";
}

TEST_F(PagingTest, ImpressionsGoOutOncePerMessageAndNeverForTheFirst) {
  const auto view = shown();
  view->performLayout();
  EXPECT_THAT(newUrls(), IsEmpty());
  view->rightButton->tap();
  view->performLayout();
  EXPECT_THAT(newUrls(), ElementsAre("https://t/1a", "https://t/1b"));
  view->leftButton->tap();
  view->leftButton->tap();
  EXPECT_THAT(newUrls(), ElementsAre("https://t/2a", "https://t/2b"));
  for (int i = 0; i < 6; ++i) view->rightButton->tap();
  EXPECT_THAT(newUrls(), IsEmpty());
  EXPECT_THAT(view->positionsCovered(), ElementsAre(0, 1, 2));
}

TEST_F(PagingTest, AMessageWithoutTrackersCountsAsCovered) {
  const auto view =
      shown(R"({"p":[{"o":{"image":"https://i"}},{"o":{"image":"https://i"}}],"isMultiple":true})");
  view->rightButton->tap();
  EXPECT_THAT(view->positionsCovered(), ElementsAre(0, 1));
  EXPECT_THAT(newUrls(), IsEmpty());
}

TEST_F(PagingTest, OpeningFiresTheFirstTrackerOpensTheLinkAndFollowsUp) {
  const auto view = shown();
  view->rightButton->tap();
  newUrls();
  view->conversionButton->tap();
  EXPECT_THAT(newUrls(), ElementsAre("https://c/1"));
  store().setObject("vs_eEndpoint", {std::string("https://e/?a")});
  act(*view, "open");
  EXPECT_THAT(newUrls(), ElementsAre("https://c/1"));
  store().setObject("vs_adex", {true});
  view->conversionButton->tap();
  EXPECT_THAT(newUrls(), ElementsAre("https://c/1", "https://e/?a&ver=2.0.0"));
  EXPECT_THAT(controller_->context->opened, ElementsAre("app://open/1", "app://open/1", "app://open/1"));
}

TEST_F(PagingTest, OpeningSkipsWhatItCanDoWithout) {
  const auto open = [this](const std::string& data) {
    const auto view =
        shown(R"({"p":[{"o":{"image":"https://i","data":)" + data + R"(}}],"isMultiple":true})");
    view->conversionButton->tap();
    return newUrls();
  };
  EXPECT_THAT(open(R"({"url":"https://o","t":["no url","https://c"]})"), IsEmpty());
  EXPECT_THAT(open(R"({"url":"relative","t":["https://c"]})"), ElementsAre("https://c"));
  EXPECT_THAT(controller_->context->opened, ElementsAre("https://o"));
  for (const char* data : {"null", R"({"url":"https://o"})", R"({"url":"https://o","t":[]})",
                           R"({"url":"https://no host","t":["https://c"]})"}) {
    const auto json =
        std::string(R"({"p":[{"o":{"image":"https://i","data":)") + data + R"(}}],"isMultiple":true})";
    EXPECT_FALSE(VorselNotificationView::check(delivered(json).request)) << data;
  }
  EXPECT_DEATH(open("null"), "Fatal error: VorselKelp/VorselNotificationUI: .*no \"data\"");
  EXPECT_DEATH(open(R"({"url":"https://o"})"), "no tracker");
  EXPECT_DEATH(open(R"({"url":"https://o","t":[]})"), "no tracker");
  EXPECT_DEATH(open(R"({"url":"https://no host","t":["https://c"]})"), "forms no URL");
  controller_->context = nullptr;
  EXPECT_DEATH(open(R"({"url":"https://o","t":["https://c"]})"), "no extension context");
}

TEST_F(PagingTest, OpeningNeedsTheController) {
  const auto plain = std::make_shared<ui::ViewController>();
  auto view = VorselNotificationView::make(delivered(carousel()), plain);
  EXPECT_DEATH(view->conversionButton->tap(), "no message is shown");
  view->performLayout();
  newUrls();
  view->conversionButton->tap();
  EXPECT_THAT(newUrls(), ElementsAre("https://c/0")) << "a controller that opens nothing";
  view = shown();
  controller_.reset();
  EXPECT_DEATH(view->conversionTapped(), "controller has gone");
}

TEST_F(PagingTest, AButtonThatOutlivesTheViewDoesNothing) {
  auto view = shown();
  const auto button = view->rightButton;
  const std::weak_ptr<ui::View> gone = view;
  view->removeFromSuperview();
  view.reset();
  EXPECT_TRUE(gone.expired());
  button->tap();
}

}  // namespace
}  // namespace VorselKelp
