#include "BrellixPush/BrellixWebViewController.h"

#include <memory>
#include <string>

#include "kellp/KellpTest.h"

namespace BrellixPush {
namespace {

using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::JSONNull;
using VorselKelp::Result;
namespace ui = VorselKelp::ui;

class WebPageTest : public VorselKelp::KellpTest {
 protected:
  WebPageTest() { app_.presenter->present(controller_, root_, true); }

  std::shared_ptr<VorselKelp::testing_platform::RecordingWebView> page() const {
    return app_.webViews->last();
  }
  std::string title() const { return controller_->navigationBar()->title.get().value_or("none"); }
  bool busy() const { return controller_->activityIndicator()->animating; }
  /// The page is there and says that this is its title.
  void finish(const Result<JSONAny>& pageTitle) {
    page()->finishNavigation();
    const auto evaluation = page()->takeEvaluation();
    ASSERT_TRUE(evaluation);
    EXPECT_EQ(evaluation->script, "document.title");
    evaluation->answer(pageTitle);
  }

  std::shared_ptr<ui::ViewController> root_ = std::make_shared<ui::ViewController>();
  std::shared_ptr<BrellixWebViewController> controller_ =
      std::make_shared<BrellixWebViewController>("https://page.example/a");
};

TEST_F(WebPageTest, TheBarStandsAboveThePageInTheSafeArea) {
  auto& bar = *controller_->navigationBar();
  const auto& view = controller_->view();
  EXPECT_EQ(view->backgroundColor.get(), ui::Color::white());
  const std::optional<ui::BarAppearance> plain(ui::BarAppearance{true, {17, false}});
  EXPECT_EQ(bar.standardAppearance.get(), plain);
  EXPECT_EQ(bar.compactAppearance.get(), plain);
  EXPECT_EQ(bar.scrollEdgeAppearance.get(), plain);
  ASSERT_TRUE(bar.leftButton());
  EXPECT_EQ(bar.leftButton()->title, "Done");
  EXPECT_EQ(bar.leftButton()->style, ui::BarButtonStyle::plain);
  EXPECT_EQ(bar.leftButton()->tint, ui::Color::pureBlue());
  EXPECT_EQ(bar.rightView(), controller_->activityIndicator());

  std::size_t safe = 0, own = 0, heights = 0;
  for (const auto& c : view->constraints()) {
    EXPECT_FALSE(c.first.view.lock()->translatesAutoresizingMaskIntoConstraints);
    if (c.againstConstant) {
      ++heights;
      EXPECT_EQ(c.constant, 44);
      EXPECT_EQ(c.first.view.lock(), controller_->navigationBar());
    } else if (c.second.view.lock() == view) {
      ++(c.second.edges == ui::Edges::safeArea ? safe : own);
      EXPECT_EQ(c.first.attribute, c.second.attribute);
    } else {
      EXPECT_EQ(c.first.view.lock(), controller_->webView());
      EXPECT_EQ(c.second.attribute, ui::Attribute::bottom);
    }
  }
  EXPECT_EQ(std::tuple(safe, own, heights, view->constraints().size()), std::tuple(4u, 2u, 1u, 8u));
}

TEST_F(WebPageTest, LoadingEndsWithATitleOrAnError) {
  ASSERT_EQ(page()->loads().size(), 1u);
  EXPECT_EQ(page()->loads()[0].url, "https://page.example/a");
  EXPECT_EQ(page()->loads()[0].timeout, 60);
  EXPECT_TRUE(page()->allowsNavigation("tel:1"));
  EXPECT_TRUE(busy());
  EXPECT_EQ(title(), "none");
  finish(JSONAny(JSONNull{}));
  EXPECT_FALSE(busy());
  EXPECT_EQ(title(), "none");
  finish(JSONAny("News"));
  EXPECT_EQ(title(), "News");
  for (const Result<JSONAny>& none : {Result<JSONAny>(JSONAny("")), Result<JSONAny>(Error{"thrown"})}) {
    finish(none);
    EXPECT_EQ(title(), "News");
  }
  controller_->activityIndicator()->startAnimating();
  page()->failNavigation(Error{"down"});
  EXPECT_FALSE(busy());
  EXPECT_EQ(title(), "Error");
}

TEST_F(WebPageTest, DoneClosesItAndALateTitleFindsNobody) {
  page()->finishNavigation();
  const auto late = page()->takeEvaluation();
  const std::weak_ptr<BrellixWebViewController> gone = controller_;
  const auto bar = controller_->navigationBar();
  controller_.reset();
  bar->tapLeftButton();
  ASSERT_EQ(app_.presenter->dismissals().size(), 1u);
  EXPECT_TRUE(app_.presenter->dismissals()[0].animated);
  EXPECT_TRUE(gone.expired());
  EXPECT_FALSE(page());
  late->answer(JSONAny("late"));
  bar->tapLeftButton();
}

TEST_F(WebPageTest, AnArchiveMakesNone) {
  EXPECT_DEATH(BrellixWebViewController(ui::Coder{}), "init.coder:. has not been implemented");
}

}  // namespace
}  // namespace BrellixPush
