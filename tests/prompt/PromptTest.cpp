#include <memory>
#include <string>
#include <utility>

#include "kellp/KellpTest.h"
#include "prompt/PromptPage.h"
#include "prompt/VorselKellpCustomNotificationView.h"

namespace VorselKelp {
namespace {

using platform::AuthorizationStatus;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* custom = R"({"push_config":{"prompts":[{"prompt":"native"},{"prompt":"page"}]}})";

/// An application whose remote configuration is the document.
class PromptTest : public KellpTest {
 protected:
  PromptTest() { app_.presenter->setRootViewController(root_); }
  /// A page still on the screen holds the core, whose platform holds the screen.
  ~PromptTest() override { app_.presenter->setRootViewController(nullptr); }

  void startWith(const std::string& document) {
    VorselKellp::initialize(VorselBuilder("key", group).push().build());
    app_.urlSession->setRule("/tag/key.json", status(200, document));
    app_.settle();
  }
  void ask() {
    VorselKellp::askForNotificationPermissionWith(root_);
    app_.settle();
  }
  /// Shows the page and has it post `body`; the lines that this writes.
  std::vector<std::string> answered(const JSONAny& body) {
    ask();
    app_.console->clear();
    const auto view = page();
    EXPECT_TRUE(view && view->post(answerBridge, body));
    app_.settle();
    return lines();
  }
  std::shared_ptr<testing_platform::RecordingWebView> page() const { return app_.webViews->last(); }
  std::size_t requests() const { return device_->notificationCenter->authorizationRequests().size(); }

  std::shared_ptr<ui::ViewController> root_ = std::make_shared<ui::ViewController>();
};

TEST_F(PromptTest, TheUserIsAskedByThePageOrByTheSystemOrNotAtAll) {
  const struct {
    AuthorizationStatus decision;
    bool flag;
    std::size_t pages, requests;
  } cases[] = {
      {AuthorizationStatus::denied, true, 0, 0},        {AuthorizationStatus::authorized, true, 0, 0},
      {AuthorizationStatus::provisional, true, 0, 0},   {AuthorizationStatus::ephemeral, true, 0, 0},
      {AuthorizationStatus::notDetermined, true, 1, 0}, {AuthorizationStatus::notDetermined, false, 1, 1},
  };
  const auto context = CoreContext::current("a test");
  for (const auto& c : cases) {
    context->state.customPrompt = c.flag;
    device_->notificationCenter->setAuthorizationStatus(c.decision);
    ask();
    EXPECT_EQ(app_.presenter->presentations().size(), c.pages) << static_cast<int>(c.decision) << c.flag;
    EXPECT_EQ(requests(), c.requests) << static_cast<int>(c.decision) << c.flag;
  }
}

TEST_F(PromptTest, ThePageComesOverTheApplicationOnTheMainQueue) {
  startWith(custom);
  VorselKellp::askForNotificationPermissionWith(root_);
  EXPECT_THAT(app_.presenter->presentations(), IsEmpty());
  app_.settle();
  ASSERT_EQ(app_.presenter->presentations().size(), 1u);
  EXPECT_FALSE(app_.presenter->presentations()[0].animated);
  const auto controller = root_->presentedViewController();
  ASSERT_TRUE(controller);
  EXPECT_EQ(controller->modalPresentationStyle, ui::PresentationStyle::overFullScreen);

  const auto view = page();
  EXPECT_EQ(controller->view(), view);
  EXPECT_EQ(view->frame.get(), (ui::Rect{{0, 0}, {0.1, 0.1}}));
  EXPECT_FALSE(view->opaque);
  EXPECT_EQ(view->backgroundColor.get(), ui::Color::clear());
  EXPECT_EQ(view->scrollBackgroundColor.get(), ui::Color::clear());
  EXPECT_TRUE(view->configuration().javaScriptEnabled);
  EXPECT_TRUE(view->configuration().javaScriptCanOpenWindowsAutomatically);
  ASSERT_EQ(view->configuration().userScripts.size(), 1u);
  EXPECT_TRUE(view->configuration().userScripts[0].mainFrameOnly);
  EXPECT_EQ(view->configuration().userScripts[0].source, consoleForwardingScript());
  EXPECT_TRUE(view->allowsNavigation("https://elsewhere.example"));

  EXPECT_TRUE(controller->accessibilityPerformEscape());
  EXPECT_FALSE(root_->presentedViewController());
  EXPECT_EQ(requests(), 0u);
}

TEST_F(PromptTest, ThePageShowsTheStoredConfigurationWhateverItHolds) {
  const std::string deep = std::string(100, '[') + "1" + std::string(100, ']');
  const std::pair<std::string, std::string> configurations[] = {
      {R"({"a":"say hi \\ \/"})", R"(var _VSPC = {"a":"say hi  /"};)"},
      {R"({"a":"</script><!-- \u003c"})", R"(var _VSPC = {"a":"\u003c/script>\u003c!-- u003c"};)"},
      {R"({"a":"AUTOCONF"})", R"(var _VSPC = {"a":"AUTOCONF"};)"},
      {deep, "var _VSPC = " + deep + ";"},
      {"", "var _VSPC = ;"},
  };
  CoreContext::current("a test")->state.customPrompt = true;
  for (const auto& [stored, written] : configurations) {
    app_.standardDomain->setObject("vs_autoconf", {stored});
    ask();
    ASSERT_EQ(page()->loads().size(), 1u);
    EXPECT_FALSE(page()->loads()[0].baseUrl);
    const std::string html = page()->loads()[0].html;
    EXPECT_THAT(html, HasSubstr(written));
    EXPECT_EQ(occurrences(html, "</script>"), 2u);
    EXPECT_THAT(html, HasSubstr("https://script.vorsel.example/v2/mobile.js"));
    page()->post(answerBridge, "leave");
  }
  app_.standardDomain->removeObject("vs_autoconf");
  ask();
  EXPECT_THAT(page()->loads()[0].html, HasSubstr("var _VSPC = ;"));
}

TEST_F(PromptTest, APageThatCouldNotRunIsNotShownAndNobodyIsAsked) {
  CoreContext::current("a test")->state.customPrompt = true;
  for (const char* stored : {R"({"a":"say \"hi\""})", " ", "<html>", "[1", R"({"a":[})"}) {
    app_.standardDomain->setObject("vs_autoconf", {std::string(stored)});
    app_.console->clear();
    ask();
    EXPECT_THAT(lines(), ElementsAre(testing::StartsWith("The permission page is not shown: "))) << stored;
  }
  EXPECT_THAT(app_.presenter->presentations(), IsEmpty());
  EXPECT_EQ(requests(), 0u);
  app_.standardDomain->setObject("vs_autoconf", {std::string("{}")});
  ask();
  EXPECT_EQ(app_.presenter->presentations().size(), 1u);
}

TEST_F(PromptTest, OnlyAnAgreementLeadsToTheSystemsDialog) {
  startWith(custom);
  EXPECT_THAT(answered(R"({"event":"pns.cancel"})"),
              ElementsAre(R"(CustomPromtEvent(event: Optional("pns.cancel"), data: nil))"));
  EXPECT_THAT(answered("no JSON, ok?"), ElementsAre("nil"));
  EXPECT_THAT(answered(JSONAny::Dictionary{{"event", "pns.ok"}}), ElementsAre("nil"));
  EXPECT_THAT(answered(true), ElementsAre("nil"));
  EXPECT_THAT(answered(JSONNull{}), ElementsAre("nil"));
  EXPECT_THAT(answered("{\"event\":\"ok\xff\"}"), IsEmpty()) << "no text at all";
  EXPECT_THAT(answered(R"({"event":"pns.ok","data":")" + std::string(1 << 20, 'x') + "\"}"),
              ElementsAre("nil"));
  EXPECT_EQ(requests(), 0u);
  EXPECT_EQ(app_.presenter->dismissals().size(), 7u);

  EXPECT_THAT(answered(R"({"data":{"text":"\"]}\\","button":)" + std::string(200'000, '[') +
                       std::string(200'000, ']') + R"(},"event":"pns.ok"})"),
              ElementsAre(R"(CustomPromtEvent(event: Optional("pns.ok"), data: Optional(DataClass())))"));
  EXPECT_EQ(requests(), 1u);
  EXPECT_EQ(app_.application->registrations(), 1u) << "allowed, and registered";
  for (const auto& dismissal : app_.presenter->dismissals()) EXPECT_FALSE(dismissal.animated);
  EXPECT_FALSE(root_->presentedViewController());
  EXPECT_FALSE(page()) << "the page goes with its screen";
}

TEST_F(PromptTest, OnlyTheFirstMessageCountsEachTimeThePageIsShown) {
  startWith(custom);
  ask();
  const auto controller = root_->presentedViewController();
  const auto view = page();
  view->post(answerBridge, R"({"event":"pns.cancel"})");
  view->post(answerBridge, R"({"event":"pns.ok"})");
  app_.settle();
  EXPECT_EQ(requests(), 0u);
  EXPECT_EQ(app_.presenter->dismissals().size(), 1u);

  app_.presenter->present(controller, root_, false);
  EXPECT_EQ(view->loads().size(), 2u);
  view->post(answerBridge, R"({"event":"pns.ok"})");
  app_.settle();
  EXPECT_EQ(requests(), 1u);
}

TEST_F(PromptTest, AScreenThatGoesTakesWhatItPresentsWithIt) {
  const auto page = std::make_shared<ui::ViewController>(), above = std::make_shared<ui::ViewController>();
  ASSERT_TRUE(root_->link(page) && page->link(above));
  EXPECT_TRUE(page->unlink());
  EXPECT_FALSE(above->presentingViewController() || page->presentedViewController());
  EXPECT_TRUE(root_->link(above) && above->unlink());
}

TEST_F(PromptTest, TheConsoleOfThePageStaysOutOfTheLog) {
  startWith(custom);
  ask();
  app_.console->clear();
  EXPECT_TRUE(page()->post(consoleBridge, "📗 JS log: {\"event\":\"pns.ok\"}"));
  app_.settle();
  EXPECT_THAT(lines(), IsEmpty());
  EXPECT_TRUE(root_->presentedViewController());
  EXPECT_EQ(requests(), 0u);
  EXPECT_FALSE(page()->post("other", "ok"));
}

TEST_F(PromptTest, AControllerOrACoreThatHasGoneShowsNothing) {
  startWith(custom);
  VorselKellp::askForNotificationPermissionWith(std::make_shared<ui::ViewController>());
  app_.settle();
  EXPECT_THAT(app_.presenter->presentations(), IsEmpty());

  ask();
  const auto view = page();
  VorselKellp::uninstall();
  view->post(answerBridge, R"({"event":"pns.ok"})");
  app_.settle();
  EXPECT_EQ(requests(), 0u);
  EXPECT_FALSE(root_->presentedViewController());
}

}  // namespace
}  // namespace VorselKelp
