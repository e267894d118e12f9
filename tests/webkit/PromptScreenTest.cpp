#include "VorselKelpWebKit/WebViews.h"
#include "gtk/support/ScreenTest.h"
#include "kellp/KellpTest.h"
#include "prompt/PromptPage.h"
#include "prompt/VorselKellpCustomNotificationView.h"

namespace VorselKelp {
namespace {

struct EngineViews final : platform::WebViews {
  std::shared_ptr<ui::WebView> makeWebView(ui::WebViewConfiguration configuration, ui::Rect frame) override {
    auto view = webkit::makeWebView(std::move(configuration),
                                    {nullptr, [this](ui::WebView&, const std::vector<std::string>&,
                                                     const std::shared_ptr<void>&) { ++loaded; }});
    view->frame = frame;
    last = view;
    return view;
  }
  std::weak_ptr<ui::WebView> last;
  int loaded = 0;
};

struct ConsoleReader final : ui::ScriptMessageHandler {
  void didReceive(const std::string&, const JSONAny& body) override {
    heard.push_back(body.as<std::string>() ? *body.as<std::string>() : "no text");
  }
  std::vector<std::string> heard;
};

/// The publisher's page in the real engine, over an application that is green.
class PromptScreenTest : public KellpTest, protected gtk::TestScreen {
 protected:
  PromptScreenTest() {
    root_->view()->backgroundColor = ui::Color{0, 0.5019607843, 0, 1};
    show(root_);
    app_.platform()->endpoints.script = "http://127.0.0.1:59999";  // nobody serves there: no script comes
    app_.platform()->webViews = views_;
    app_.platform()->viewPresenter = stage->presenter();
  }

  /// Presents the page with this stored configuration and waits until it has been loaded.
  void present(const std::string& configuration) {
    const auto context = CoreContext::current("a test");
    context->storage.set(StorageKey::autoConfiguration, configuration);
    app_.platform()->viewPresenter->present(
        std::make_shared<VorselKellpCustomNotificationView>(context, [this] { ++agreed_; }), root_, false);
    waitUntil([&] { return views_->loaded > 0; });
  }
  /// For scripts that take the page away, and with it the answer.
  void run(const std::string& script) {
    views_->last.lock()->evaluateJavaScript(script, [](const Result<JSONAny>&) {});
  }
  bool shown() const { return root_->presentedViewController() != nullptr; }
  JSONAny evaluate(const std::string& script) {
    std::optional<Result<JSONAny>> value;
    views_->last.lock()->evaluateJavaScript(script,
                                            [&](Result<JSONAny> result) { value = std::move(result); });
    waitUntil([&] { return value.has_value(); });
    return value->ok() ? **value : JSONAny("error: " + value->error().description);
  }

  std::shared_ptr<ui::ViewController> root_ = std::make_shared<ui::ViewController>();
  std::shared_ptr<EngineViews> views_ = std::make_shared<EngineViews>();
  int agreed_ = 0;
};

TEST_F(PromptScreenTest, ShowsTheApplicationBehindItAndHearsTheAnswer) {
  present(R"({"push_config":{"prompts":[{"prompt":"page"}]}})");
  waitUntil([&] { return pixel(200, 200) == "#008000"; });
  EXPECT_EQ(evaluate("_VSPC.push_config.prompts[0].prompt"), JSONAny("page"));
  EXPECT_EQ(screens, std::vector{true});
  run("var e = new Event('pns.htmlOK'); e.vsData = JSON.parse('['.repeat(500) + ']'.repeat(500));"
      "document.body.dispatchEvent(e); null");
  waitUntil([&] { return !shown(); });
  EXPECT_EQ(agreed_, 1) << "however deep the data of the page is";
  EXPECT_EQ(screens, (std::vector{true, false}));
}

TEST_F(PromptScreenTest, TakesARefusalAndAnAgreementWithoutData) {
  present("{}");
  run("console.log('chatter', {a: 1}); document.body.dispatchEvent(new Event('pns.htmlCancel')); null");
  waitUntil([&] { return !shown(); });
  EXPECT_EQ(agreed_, 0);
  views_->loaded = 0;
  present("{}");
  run("document.body.dispatchEvent(new Event('pns.htmlOK')); null");
  waitUntil([&] { return !shown(); });
  EXPECT_EQ(agreed_, 1);
  EXPECT_EQ(lines().back(), R"(CustomPromtEvent(event: Optional("pns.ok"), data: Optional(DataClass())))");
}

TEST_F(PromptScreenTest, ForwardsItsConsoleAndDoesNothingWithoutItsBridge) {
  const auto console = std::make_shared<ConsoleReader>();
  ui::WebViewConfiguration configuration;
  configuration.messageHandlers.push_back({consoleBridge, console});
  configuration.userScripts.push_back({"window.said = []; console.log = text => said.push(text);", true});
  configuration.userScripts.push_back({std::string(consoleForwardingScript()), true});
  const auto view = views_->makeWebView(std::move(configuration), {{0, 0}, {100, 100}});
  root_->view()->addSubview(view);
  view->loadHTMLString(promptPage("http://127.0.0.1:59999", "{}"), std::nullopt);
  waitUntil([&] { return views_->loaded > 0; });
  EXPECT_EQ(evaluate("typeof _VSPC"), JSONAny("undefined"));
  evaluate("document.body.dispatchEvent(new Event('pns.htmlOK')); null");
  EXPECT_THAT(console->heard, testing::IsEmpty()) << "no listener that fails";

  run(R"(var own = {}; own.own = own; console.log('text', {a: 1}, undefined, null, own); console.warn(1.5);
         console.error('x'.repeat(3001)); console.debug(true); setTimeout(() => { throw 'late' }, 0); null)");
  waitUntil([&] { return console->heard.size() == 5; });
  EXPECT_EQ(evaluate("said.join()"), JSONAny("text")) << "the console before is written to as well";
  EXPECT_THAT(
      console->heard,
      testing::ElementsAre(R"(📗 JS log: text, {"a":1}, undefined, null, [object Object])",
                           "📙 JS warning: 1.5", "📕 JS error: " + std::string(3000, 'x'), "📘 JS debug: true",
                           testing::MatchesRegex("💥 JS Uncaught: .+ at .*:[0-9]+:[0-9]+")));
}

TEST_F(PromptScreenTest, KeepsAHostileConfigurationInItsPlace) {
  present(
      R"({"a":"</script><script>window.broken=1</script><!--<script>","b":"<!-- AUTOCONF <iframe src=x>"})");
  EXPECT_EQ(evaluate("typeof window.broken"), JSONAny("undefined"));
  EXPECT_EQ(evaluate("_VSPC.a"), JSONAny("</script><script>window.broken=1</script><!--<script>"));
  EXPECT_EQ(evaluate("_VSPC.b"), JSONAny("<!-- AUTOCONF <iframe src=x>"));
  EXPECT_EQ(evaluate("document.querySelectorAll('iframe').length"), JSONAny(std::int64_t{0}));

  // An iframe is not the page: it can neither answer for it nor take it down.
  evaluate(R"(var f = document.createElement('iframe'); f.srcdoc =
    '<script>try { webkit.messageHandlers.JSBridge.postMessage("{\\"event\\":\\"pns.ok\\"}") } catch (e) {}' +
    ';parent.tried = 1<\/script>'; document.body.append(f); null)");
  waitUntil([&] { return evaluate("window.tried || 0") == JSONAny(std::int64_t{1}); });
  EXPECT_TRUE(shown());
  EXPECT_EQ(agreed_, 0);
  run("window.webkit.messageHandlers.JSBridge.postMessage('x'.repeat(5000000)); null");
  waitUntil([&] { return !shown(); });
  EXPECT_EQ(agreed_, 0) << "a huge message is no agreement";
}

}  // namespace
}  // namespace VorselKelp
