#include "VorselKelp/ui/ImageView.h"
#include "VorselKelp/ui/NavigationBar.h"
#include "gtk/support/ScreenTest.h"

namespace VorselKelp::gtk {
namespace {

using namespace ui;

template <class Kind>
std::shared_ptr<Kind> add(View& parent) {
  auto view = std::make_shared<Kind>();
  view->translatesAutoresizingMaskIntoConstraints = false;
  parent.addSubview(view);
  return view;
}

ImagePtr plainImage(int side, std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
  std::vector<std::uint8_t> pixels;
  for (int i = 0; i < side * side; ++i) pixels.insert(pixels.end(), {red, green, blue, 255});
  return std::make_shared<Image>(side, side, std::move(pixels));
}

class ViewRendererTest : public ScreenTest {
 protected:
  std::shared_ptr<View> root = std::make_shared<View>();
};

TEST_F(ViewRendererTest, PlacesAStackSoThatThePictureGetsWhatTheTextsLeave) {
  const auto title = add<Label>(*root);
  const auto picture = add<ImageView>(*root);
  const auto button = add<Button>(*root);
  title->text = "A title";
  title->font = Font{13, true};
  picture->image = plainImage(600, 0, 128, 0);
  for (const auto& each : {std::static_pointer_cast<View>(title), std::static_pointer_cast<View>(picture)}) {
    root->activate(
        {equal(each->leading(), root->leading(), 10), equal(each->trailing(), root->trailing(), -10)});
  }
  root->activate({equal(title->top(), root->top(), 5), equal(picture->top(), title->bottom(), 5),
                  equal(picture->bottom(), root->bottom(), -10), fixed(button->width(), 40),
                  fixed(button->height(), 40), equal(button->leading(), root->leading(), 10),
                  equal(button->centerY(), picture->centerY())});
  show(root);
  const double line = title->frame.get().size.height;
  EXPECT_GT(line, 10);
  EXPECT_LT(line, 30);
  expectPlaced(*title, {{10, 5}, {width - 20, line}});
  const double left = height - 10 - (5 + line + 5);
  expectPlaced(*picture, {{10, 10 + line}, {width - 20, left}});
  expectPlaced(*button, {{10, 10 + line + left / 2 - 20}, {40, 40}});
  EXPECT_EQ(pixel(width / 2, height / 2), "#008000");

  title->text = std::string(500, 'm');  // it must not push anything aside
  settle();
  expectPlaced(*picture, {{10, 10 + line}, {width - 20, left}});
}

TEST_F(ViewRendererTest, ALabelThatNothingWidensIsAsWideAsItsText) {
  const auto placed = add<Label>(*root);
  const auto loose = add<Label>(*root);  // without any constraint
  root->activate({equal(placed->leading(), root->leading(), 10), equal(placed->top(), root->top(), 50)});
  placed->text = "A title";
  loose->text = "A title";
  show(root);
  const double before = placed->frame.get().size.width;
  EXPECT_GT(before, 20);
  EXPECT_LT(before, 100);
  EXPECT_EQ(loose->frame.get().size.width, before);
  placed->text = "A title of more words";
  settle();
  EXPECT_GT(placed->frame.get().size.width, before + 20);
  EXPECT_LT(placed->frame.get().size.width, 250);
}

TEST_F(ViewRendererTest, SendsAClickToTheTopmostViewThatHearsIt) {
  int covered = 0, pressed = 0, tapped = 0;
  const auto below = add<Button>(*root);
  const auto arrow = add<Button>(*root);
  const auto label = add<Label>(*root);  // above both, and hears nothing
  const auto picture = add<ImageView>(*root);
  below->onTouchUpInside([&] { ++covered; });
  arrow->onTouchUpInside([&] { ++pressed; });
  picture->addTapRecognizer([&] { ++tapped; });
  root->activate(pinnedEdges(below, root));
  root->activate(pinnedEdges(label, root));
  for (const auto& [view, x] : {std::pair<std::shared_ptr<View>, double>(arrow, 10.0), {picture, 100.0}}) {
    root->activate({equal(view->leading(), root->leading(), x), equal(view->top(), root->top(), 10),
                    fixed(view->width(), 40), fixed(view->height(), 40)});
  }
  show(root);
  click(*arrow);
  waitUntil([&] { return pressed == 1; });
  click(*picture);
  waitUntil([&] { return tapped == 1; });
  click(200, 200);
  waitUntil([&] { return covered == 1; });
  arrow->hidden = true;
  settle();
  click(30, 30);
  waitUntil([&] { return covered == 2; });
  EXPECT_EQ(pressed, 1);
}

TEST_F(ViewRendererTest, FollowsATreeThatChangesUnderItsHands) {
  const auto first = add<View>(*root);
  first->backgroundColor = Color{1, 0, 0, 1};
  root->activate(pinnedEdges(first, root));
  show(root);
  EXPECT_EQ(pixel(50, 50), "#ff0000");

  const auto second = std::make_shared<View>(Rect{{0, 0}, {width, height}});
  second->backgroundColor = Color{0, 0, 1, 0.2};
  root->addSubview(second);
  settle();
  expectPlaced(*second, {{0, 0}, {width, height}});
  EXPECT_EQ(pixel(50, 50), "#cc0033");

  // A tap that takes its own view away.
  const auto leaving = add<Button>(*second);
  second->activate(pinnedEdges(leaving, second));
  bool gone = false;
  leaving->onTouchUpInside([&] {
    second->removeFromSuperview();
    gone = true;
  });
  settle();
  click(50, 50);
  waitUntil([&] { return gone; });
  settle();
  EXPECT_EQ(pixel(50, 50), "#ff0000");
}

TEST_F(ViewRendererTest, RunsALayoutPassThatMaySetEverythingAgain) {
  struct Repeating : View {
    void layoutSubviews() override {
      ++passes;
      for (const auto& view : subviews()) static_cast<Label&>(*view).text = "the same";
    }
    int passes = 0;
  };
  const auto view = std::make_shared<Repeating>();
  const auto label = add<Label>(*view);
  view->activate({equal(label->leading(), view->leading()), equal(label->top(), view->top())});
  show(view);
  EXPECT_EQ(label->text.get(), "the same");
  const int before = view->passes;
  EXPECT_GT(before, 0);
  settle();
  EXPECT_EQ(view->passes, before) << "setting equal values must not cause layout without end";
  view->setNeedsLayout();
  settle();
  EXPECT_EQ(view->passes, before + 1);
}

TEST_F(ViewRendererTest, OutlivesItsWindow) {
  show(root);
  gtk_widget_set_visible(GTK_WIDGET(window), FALSE);
  root->backgroundColor = Color{1, 0, 0, 1};
  add<Label>(*root);
  flush();
  EXPECT_FALSE(writePicture(GTK_WIDGET(window), "/nowhere/picture.png").ok());
}

TEST_F(ViewRendererTest, ShowsABarWithItsButtonAndItsIndicator) {
  const auto bar = add<NavigationBar>(*root);
  const auto indicator = std::make_shared<ActivityIndicator>();
  int done = 0;
  bar->title = "A page";
  bar->standardAppearance = BarAppearance{true, {17, false}};
  bar->setLeftButton({"Done", BarButtonStyle::plain, Color::pureBlue(), [&] { ++done; }});
  bar->setRightView(indicator);
  indicator->startAnimating();
  root->activate({equal(bar->leading(), root->leading()), equal(bar->trailing(), root->trailing()),
                  equal(bar->top(), root->top()), fixed(bar->height(), 44)});
  show(root);
  expectPlaced(*bar, {{0, 0}, {width, 44}});
  expectPlaced(*indicator, {{width - 28, 12}, {20, 20}});
  EXPECT_EQ(pixel(width - 60, 5), "#f7f7f7");
  click(25, 22);
  waitUntil([&] { return done == 1; });
}

}  // namespace
}  // namespace VorselKelp::gtk
