#include <map>
#include <sstream>

#include "content_ext/CarouselTest.h"
#include "content_ext/ColorFromHex.h"
#include "core/CoreContext.h"
#include "core/CoreScope.h"

namespace VorselKelp {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

class LayoutTest : public CarouselTest {
 protected:
  /// "title.top = view.top+5" for every constraint of the view.
  static std::vector<std::string> constraints(VorselNotificationView& view) {
    const std::map<const ui::View*, const char*> names = {{&view, "view"},
                                                          {view.titleLabel.get(), "title"},
                                                          {view.subtitleLabel.get(), "body"},
                                                          {view.imageView.get(), "image"},
                                                          {view.conversionButton.get(), "all"},
                                                          {view.leftButton.get(), "left"},
                                                          {view.rightButton.get(), "right"}};
    const char* const attributes[] = {"leading", "trailing", "top", "bottom", "width", "height", "cX", "cY"};
    const auto name = [&](const ui::Anchor& anchor) {
      return std::string(names.at(anchor.view.lock().get())) + "." +
             attributes[static_cast<std::size_t>(anchor.attribute)];
    };
    std::vector<std::string> texts;
    for (const ui::Constraint& c : view.constraints()) {
      std::ostringstream text;
      text << name(c.first) << " = ";
      if (!c.againstConstant) text << name(c.second) << std::showpos;
      if (c.againstConstant || c.constant != 0) text << c.constant;
      EXPECT_EQ(c.multiplier, 1);
      texts.push_back(text.str());
    }
    return texts;
  }
  static std::vector<std::string> stack(std::vector<std::string> names, const std::string& gap) {
    std::vector<std::string> texts;
    std::string above = "view.top";
    for (const auto& name : names) {
      texts.push_back(name + ".top = " + above + gap);
      texts.push_back(name + ".leading = view.leading+10");
      texts.push_back(name + ".trailing = view.trailing-10");
      above = name + ".bottom";
    }
    texts.push_back(above + " = view.bottom-10");
    return texts;
  }
  static inline const std::vector<std::string> buttons = {"all.top = view.top",
                                                          "all.leading = view.leading",
                                                          "all.bottom = view.bottom",
                                                          "all.trailing = view.trailing",
                                                          "left.leading = view.leading+10",
                                                          "left.cY = image.cY",
                                                          "left.width = 40",
                                                          "left.height = 40",
                                                          "right.trailing = view.trailing-10",
                                                          "right.cY = image.cY",
                                                          "right.width = 40",
                                                          "right.height = 40"};
};

TEST_F(LayoutTest, EveryLayoutCodeHasItsOrderAndGaps) {
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"", stack({"title", "body", "image"}, "+5")},
      {R"(,"el":0)", stack({"title", "body", "image"}, "+5")},
      {R"(,"el":1)", stack({"title", "image", "body"}, "+10")},
      {R"(,"el":2)", stack({"image", "title", "body"}, "+5")},
      {R"(,"el":3)", {}},
      {R"(,"el":5)", {}},
      {R"(,"el":-1)", {}}};
  for (const auto& [members, expected] : cases) {
    auto all = expected;
    all.insert(all.end(), buttons.begin(), buttons.end());
    EXPECT_THAT(constraints(*make(carousel(members))), ElementsAreArray(all)) << members;
  }
}

TEST_F(LayoutTest, TheViewTakesTheControllersViewOver) {
  controller_->view()->addSubview(std::make_shared<ui::View>());
  controller_->view()->addSubview(std::make_shared<ui::View>());
  const auto view = make();
  EXPECT_THAT(controller_->view()->subviews(), ElementsAre(view));
  EXPECT_EQ(view->frame.get(), controller_->view()->frame.get());
  EXPECT_THAT(view->subviews(), ElementsAre(view->imageView, view->titleLabel, view->subtitleLabel,
                                            view->conversionButton, view->leftButton, view->rightButton));
  for (const auto& child : view->subviews())
    EXPECT_FALSE(child->translatesAutoresizingMaskIntoConstraints.get());
  EXPECT_EQ(view->titleLabel->text.get(), "TITLE");
  EXPECT_EQ(view->titleLabel->font.get(), (ui::Font{13, true}));
  EXPECT_EQ(view->subtitleLabel->text.get(), "SUBTITLE");
  EXPECT_EQ(view->subtitleLabel->font.get(), (ui::Font{11, false}));
  for (const auto& label : {view->titleLabel, view->subtitleLabel})
    EXPECT_EQ(label->textAlignment.get(), ui::TextAlignment::left);
  EXPECT_EQ(view->leftButton->alpha.get(), 0.7);
  EXPECT_EQ(view->leftButton->contentMode.get(), ui::ContentMode::scaleAspectFill);
  EXPECT_EQ(view->leftButton->imageContentMode.get(), ui::ContentMode::scaleAspectFill);
  EXPECT_EQ(widthOf(view->leftButton->backgroundImage), 8);
  EXPECT_EQ(widthOf(view->rightButton->backgroundImage), 9);
  EXPECT_EQ(view->notificationRequest()->identifier, "n-1");
  EXPECT_EQ(view->notifExtension(), controller_);
  EXPECT_FALSE(view->presentedNotification());
}

TEST_F(LayoutTest, ASingleMessageShowsNoArrows) {
  EXPECT_FALSE(make()->leftButton->hidden.get());
  const auto view = shown(carousel({}, "false"));
  EXPECT_TRUE(view->leftButton->hidden.get() && view->rightButton->hidden.get());
  view->rightButton->tap();
  EXPECT_EQ(view->titleLabel->text.get(), "T0") << "what is hidden hears no tap";
  EXPECT_FALSE(constraints(*view).empty());
}

TEST_F(LayoutTest, ColoursAreTheFirstMessages) {
  const auto view = make(carousel(R"(,"tc":"ff0000","dc":"#80ff0000")"));
  EXPECT_EQ(view->titleLabel->textColor.get(), (ui::Color{1, 0, 0, 1}));
  EXPECT_EQ(view->subtitleLabel->textColor.get(), (ui::Color{1, 0, 0, 128 / 255.0}));
  EXPECT_EQ(make()->titleLabel->textColor.get(), ui::Color::black());
  const std::pair<const char*, ui::Color> cases[] = {{"#fff", ui::Color::white()},
                                                     {"#123", {17 / 255.0, 34 / 255.0, 51 / 255.0, 1}},
                                                     {" ##0A141e; ", {10 / 255.0, 20 / 255.0, 30 / 255.0, 1}},
                                                     {"00ffffff", {1, 1, 1, 0}},
                                                     {"ffzzzz", {0, 0, 1, 1}},
                                                     {"zzzzzz", ui::Color::black()},
                                                     {"ff\xc3\xa9", {0, 15 * 17 / 255.0, 1, 1}},
                                                     {"\u201c#fff\u201d", ui::Color::white()},
                                                     {"\u00a0fff\u2060\u00bb ", ui::Color::white()},
                                                     {"fff\u20ac", ui::Color::black()},
                                                     {"ffff", ui::Color::black()},
                                                     {"123456789", ui::Color::black()},
                                                     {"", ui::Color::black()}};
  for (const auto& [text, color] : cases) EXPECT_EQ(colorFromHex(text), color) << text;
}

TEST_F(LayoutTest, AnOlderSystemGetsACategoryInsteadOfButtons) {
  using platform::NotificationActionOption;
  device_->notificationCenter->setNotificationCategories({{"old", {}, false}});
  auto values = device_->hardware->values();
  for (const auto& [version, old] :
       {std::pair{"11.4.1", true}, {"9", true}, {"12", false}, {"100.1", false}, {"beta", false}}) {
    values.systemVersion = version;
    device_->hardware->set(values);
    const auto before = device_->notificationCenter->categoryReplacements();
    const auto view = make();
    EXPECT_EQ(view->subviews().size(), old ? 3u : 6u) << version;
    EXPECT_EQ(constraints(*view).size(), old ? 10u : 22u) << version;
    EXPECT_EQ(device_->notificationCenter->categoryReplacements() - before, old ? 1u : 0u) << version;
  }
  values.systemFamily = "Linux";
  values.systemVersion = "3.18";
  device_->hardware->set(values);
  EXPECT_EQ(make()->subviews().size(), 6u);
  EXPECT_THAT(
      device_->notificationCenter->categories(),
      ElementsAre(platform::NotificationCategory{"vs_contentExt",
                                                 {{"next", "Next", NotificationActionOption::foreground},
                                                  {"prev", "Previuos", NotificationActionOption::foreground},
                                                  {"open", "Open", NotificationActionOption::foreground}},
                                                 false}));
}

TEST_F(LayoutTest, ACoreOfItsOwnCanBeGiven) {
  testing_platform::MemoryPlatform other(device_, testing_platform::ProcessKind::extension, "com.other");
  const CoreScope scope(std::make_shared<CoreContext>(other.platform()));
  const auto view = VorselNotificationView::make(delivered(carousel()), controller_);
  EXPECT_EQ(other.urlSession->urls().size(), 3u);
  EXPECT_THAT(newUrls(), IsEmpty());
}

TEST_F(LayoutTest, APayloadThatIsNoCarouselStopsTheExtension) {
  const std::pair<std::string, const char*> cases[] = {
      {"no JSON", "can't be read"},
      {"[]", "no JSON object"},
      {R"({"p":[{"t":"x"}],"isMultiple":true})", "p\\[0\\].o: missing"},
      {R"({"p":[{"o":{}}],"isMultiple":1})", "isMultiple: expected boolean"},
      {R"({"p":[{"o":{"image":"https://i"}}]})", "no \"isMultiple\""},
      {R"({"p":[{"o":{}}],"isMultiple":null})", "no \"isMultiple\""},
      {R"({"isMultiple":true})", "no \"p\""},
      {R"({"p":[],"isMultiple":true})", "no message"},
      {R"({"p":[{"o":{"image":"https://i"}},{"o":{"image":"https://no host"}}],"isMultiple":true})",
       "no host.*no URL"}};
  for (const auto& [json, reason] : cases) {
    EXPECT_DEATH(make(json), std::string("Fatal error: VorselKelp/VorselNotificationUI: .*") + reason);
    EXPECT_FALSE(VorselNotificationView::check(delivered(json).request)) << json;
  }
  EXPECT_TRUE(VorselNotificationView::check(delivered(carousel()).request));
  EXPECT_DEATH(make(R"({"p":[{"o":{}}],"isMultiple":true})")->performLayout(), "forms no URL");
  const auto later = shown(R"({"p":[{"o":{"image":"https://i"}},{"o":{}}],"isMultiple":true})");
  EXPECT_DEATH(later->rightButton->tap(), "forms no URL") << "and not before that message is paged to";
  EXPECT_DEATH(VorselNotificationView::make(delivered(carousel()), nullptr), "no controller");
  EXPECT_DEATH(VorselNotificationView(ui::Coder{}), "Fatal error: init\\(coder:\\) has not been implemented");
  EXPECT_DEATH(ContentExtArrowButton(ui::Coder{}), "Fatal error: init\\(coder:\\) has not been implemented");
}

TEST_F(LayoutTest, ThePreferredSizeIsLowerWithoutAnImage) {
  device_->screen->set(400, 800);
  const auto size = [](const std::string& json) {
    return VorselKellp::getPreferedContentSize(delivered(json));
  };
  const ui::Size low = {400, 120}, usual = {400, 320};
  EXPECT_EQ(size(carousel()), usual);
  EXPECT_EQ(size(carousel(R"(,"el":3)")), low);
  EXPECT_EQ(size(R"({"p":[{"o":{"el":1}},{"o":{"el":3}}]})"), usual);
  EXPECT_EQ(size(R"({"aps":{"alert":{"title":"T","n":{"el":3}}}})"), low);
  EXPECT_EQ(size("no JSON"), usual);
  EXPECT_DEATH((void)size(R"({"p":[]})"), "Fatal error: .*no message");
}

}  // namespace
}  // namespace VorselKelp
