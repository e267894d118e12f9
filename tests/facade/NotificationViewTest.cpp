#include "BrellixPush/BrellixPushSDKNotificationView.h"

#include "BrellixPush/BrellixPushSDK.h"
#include "kellp/KellpTest.h"

namespace BrellixPush {
namespace {

using testing::ElementsAre;
using VorselKelp::platform::DeliveredNotification;
namespace ui = VorselKelp::ui;

struct Viewless final : ui::ViewController {
  void loadView() override {}
};

class NotificationViewTest : public VorselKelp::KellpTest {
 protected:
  static DeliveredNotification notification(const std::string& members) {
    DeliveredNotification made;
    made.request.content.userInfo = VorselKelp::platform::UserInfo::fromJSON(
        R"({"p":[{"t":"T","o":{"el":3,"image":"https://i"}}])" + members + "}");
    return made;
  }
};

TEST_F(NotificationViewTest, TheCarouselFillsTheView) {
  const auto controller = std::make_shared<ui::ViewController>();
  controller->view()->frame = {{0, 5}, {320, 240}};
  const auto view = BrellixPushSDKNotificationView::make(notification(R"(,"isMultiple":true)"), controller);
  EXPECT_EQ(view->frame.get(), controller->view()->frame.get());
  const auto& custom = view->customView();
  ASSERT_THAT(view->subviews(), ElementsAre(custom));
  EXPECT_TRUE(controller->view()->subviews().empty());
  EXPECT_FALSE(custom->translatesAutoresizingMaskIntoConstraints.get());
  std::vector<ui::Attribute> edges;
  for (const auto& constraint : view->constraints()) {
    EXPECT_EQ(constraint.first.view.lock(), custom);
    EXPECT_EQ(constraint.second.view.lock(), view);
    EXPECT_EQ(constraint.first.attribute, constraint.second.attribute);
    EXPECT_EQ(constraint.constant, 0);
    edges.push_back(constraint.first.attribute);
  }
  EXPECT_THAT(edges, testing::UnorderedElementsAre(ui::Attribute::top, ui::Attribute::leading,
                                                   ui::Attribute::bottom, ui::Attribute::trailing));
  view->performLayout();
  EXPECT_EQ(custom->titleLabel->text.get(), "T");
  EXPECT_EQ(BrellixPushSDK::getPreferedContentSize(notification("")), (ui::Size{390, 120}));
}

TEST_F(NotificationViewTest, WithoutAViewOrAMessageTheProcessStops) {
  const auto controller = std::make_shared<ui::ViewController>();
  EXPECT_DEATH(BrellixPushSDKNotificationView::make(notification(""), controller), "isMultiple");
  EXPECT_DEATH(BrellixPushSDKNotificationView::make(notification(""), std::make_shared<Viewless>()),
               "Fatal error: BrellixPushSDKNotificationView: .*no view");
  EXPECT_DEATH(BrellixPushSDKNotificationView(ui::Coder{}), "init\\(coder:\\) has not been implemented");
}

}  // namespace
}  // namespace BrellixPush
