#include "VorselKelpWebKit/WebViews.h"

#include "gtk/support/ScreenTest.h"

namespace VorselKelp::webkit {
namespace {

struct Ears final : ui::ScriptMessageHandler {
  void didReceive(const std::string& name, const JSONAny& body) override { heard.emplace_back(name, body); }
  std::vector<std::pair<std::string, JSONAny>> heard;
};

struct Journey final : ui::NavigationDelegate {
  bool allowsNavigation(const std::string& url) override {
    asked.push_back(url);
    return allow;
  }
  void didFinishNavigation() override { ++finished; }
  void didFailNavigation(const Error& error) override { errors.push_back(error.description); }
  std::vector<std::string> asked;
  std::vector<std::string> errors;
  int finished = 0;
  bool allow = true;
};

class WebViewTest : public gtk::ScreenTest {
 protected:
  void open(ui::WebViewConfiguration configuration = {}) {
    configuration.messageHandlers.push_back({"logging", log});
    page =
        makeWebView(std::move(configuration), {nullptr, [this](ui::WebView&, const std::vector<std::string>&,
                                                               const std::shared_ptr<void>&) { ++shown; }});
    page->addMessageHandler("JSBridge", bridge);
    page->setNavigationDelegate(journey);
    root->backgroundColor = ui::Color{0, 0.5019607843, 0, 1};
    root->addSubview(page);
    show(root);
  }

  std::shared_ptr<ui::View> root = std::make_shared<ui::View>();
  std::shared_ptr<Ears> log = std::make_shared<Ears>();
  std::shared_ptr<Ears> bridge = std::make_shared<Ears>();
  std::shared_ptr<Journey> journey = std::make_shared<Journey>();
  std::shared_ptr<gtk::WidgetWebView> page;
  int shown = 0;
};

TEST_F(WebViewTest, HearsTheTopFrameAndNoOther) {
  ui::WebViewConfiguration configuration;
  configuration.userScripts.push_back(
      {"window.early = 'yes'; window.webkit.messageHandlers.logging"
       ".postMessage('script');",
       true});
  open(std::move(configuration));
  page->loadHTMLString(R"(<!DOCTYPE html><title>Tïtle</title>
    <script>
      const post = value => window.webkit.messageHandlers.JSBridge.postMessage(value);
      post('text ' + window.early); post({event: 'x', n: [1, 2.5, true, null]}); post(undefined);
      try { window.webkit = {}; delete window.webkit; } catch (e) {}
    </script>
    <iframe srcdoc="<script>
      try { window.webkit.messageHandlers.JSBridge.postMessage('iframe') } catch (e) {}
      try { window.webkit.messageHandlers.relay.postMessage('[\&quot;JSBridge\&quot;,\&quot;iframe\&quot;]') } catch (e) {}
      parent.framed = typeof window.webkit;
    </script>"></iframe>
    <script>
      try { window.webkit.messageHandlers.relay.postMessage('["JSBridge","past the bridge"]') } catch (e) {}
      window.addEventListener('load', () => setTimeout(() => post('last'), 50));
    </script>)",
                       std::nullopt);
  waitUntil([&] { return !bridge->heard.empty() && bridge->heard.back().second == JSONAny("last"); });
  ASSERT_EQ(bridge->heard.size(), 4u);
  EXPECT_EQ(bridge->heard[0].second, JSONAny("text yes"));
  const JSONAny::List list{std::int64_t{1}, 2.5, true, JSONAny()};
  EXPECT_EQ(bridge->heard[1].second, JSONAny(JSONAny::Dictionary{{"event", "x"}, {"n", list}}));
  EXPECT_EQ(bridge->heard[2].second, JSONAny());
  ASSERT_EQ(log->heard.size(), 1u) << "a script for the main frame must not run in the iframe";
  EXPECT_EQ(log->heard[0].first, "logging");
  EXPECT_EQ(shown, 1);
  EXPECT_EQ(journey->finished, 1);

  std::optional<Result<JSONAny>> title;
  page->evaluateJavaScript("document.title", [&](Result<JSONAny> value) { title = std::move(value); });
  waitUntil([&] { return title.has_value(); });
  EXPECT_EQ(**title, JSONAny("Tïtle"));
  title.reset();
  page->evaluateJavaScript("nothing.here", [&](Result<JSONAny> value) { title = std::move(value); });
  waitUntil([&] { return title.has_value(); });
  EXPECT_FALSE(title->ok());
}

TEST_F(WebViewTest, ShowsWhatLiesBehindAPageThatIsNotOpaque) {
  open();
  page->opaque = false;
  page->scrollBackgroundColor = ui::Color::clear();
  page->loadHTMLString("<body style='margin:0'><div style='height:100px;background:#0000ff'></div>",
                       std::nullopt);
  waitUntil([&] { return shown == 1; });
  waitUntil([&] { return pixel(200, 50) == "#0000ff"; });
  EXPECT_EQ(pixel(200, 200), "#008000");

  page->opaque = true;
  page->scrollBackgroundColor = ui::Color::white();
  page->loadHTMLString("<p>", std::nullopt);
  waitUntil([&] { return pixel(200, 200) == "#ffffff"; });
}

TEST_F(WebViewTest, SaysWhyAPageDidNotCome) {
  open();
  page->load("http://127.0.0.1:59999/", 5);
  waitUntil([&] { return !journey->errors.empty(); });
  EXPECT_EQ(journey->finished, 0);
  EXPECT_EQ(journey->errors.size(), 1u);
  page->loadHTMLString("<p>here", std::nullopt);
  waitUntil([&] { return journey->finished == 1; });
  page->load("http://127.0.0.1:1/", 5);
  waitUntil([&] { return journey->errors.size() == 2; });
  passFrames(10);
  EXPECT_EQ(journey->finished, 1) << "a port that the engine refuses is no blank page";
  journey->allow = false;
  page->loadHTMLString("<p>never", std::nullopt);
  waitUntil([&] { return journey->errors.size() == 3; });
  page->evaluateJavaScript("location.href = 'app://elsewhere'", [](const Result<JSONAny>&) {});
  waitUntil([&] { return !journey->asked.empty() && journey->asked.back() == "app://elsewhere"; });
}

TEST_F(WebViewTest, TellsOfTheLoadsThatThePageBegins) {
  open();
  page->loadHTMLString("<p>first", std::nullopt);
  waitUntil([&] { return journey->finished == 1; });
  const auto go = [&](const std::string& url) {
    page->evaluateJavaScript("location.href = '" + url + "'", [](const Result<JSONAny>&) {});
  };
  go("about:blank");
  waitUntil([&] { return journey->finished == 2; });
  go("http://127.0.0.1:59999/");
  waitUntil([&] { return journey->errors.size() == 1; });
  passFrames(10);
  EXPECT_EQ(journey->finished, 2);
  EXPECT_EQ(shown, 3);
}

TEST_F(WebViewTest, ALoadThatTakesAnothersPlaceEndsOnItsOwn) {
  open();
  // A server that takes the connection and says nothing.
  g_autoptr(GSocketListener) server = g_socket_listener_new();
  const auto port = g_socket_listener_add_any_inet_port(server, nullptr, nullptr);
  GSocketConnection* connection = nullptr;
  g_socket_listener_accept_async(
      server, nullptr,
      [](GObject* listener, GAsyncResult* result, gpointer accepted) {
        *static_cast<GSocketConnection**>(accepted) =
            g_socket_listener_accept_finish(G_SOCKET_LISTENER(listener), result, nullptr, nullptr);
      },
      &connection);
  const auto url = "http://127.0.0.1:" + std::to_string(port);
  page->load(url + "/first", 30);
  waitUntil([&] { return connection != nullptr; });
  page->load(url + "/second", 30);
  passFrames(30);
  EXPECT_EQ(journey->finished, 0);
  EXPECT_TRUE(journey->errors.empty()) << "the first one's end is not the second one's";
  page->loadHTMLString("<title>second</title>", std::nullopt);
  waitUntil([&] { return shown == 1; });
  EXPECT_EQ(journey->finished, 1);

  // The page that is still shown takes the place of one that does not come.
  g_clear_object(&connection);
  page->load(url + "/third", 30);
  passFrames(30);
  page->evaluateJavaScript("location.href = 'about:blank'", [](const Result<JSONAny>&) {});
  waitUntil([&] { return shown == 2; });
  passFrames(30);
  EXPECT_EQ(journey->finished, 2);
  EXPECT_TRUE(journey->errors.empty());
}

TEST_F(WebViewTest, CallsNobodyOnceItIsGone) {
  open();
  page->loadHTMLString(
      "<script>setInterval(() => webkit.messageHandlers.JSBridge.postMessage('x'), 1)</script>",
      std::nullopt);
  waitUntil([&] { return !bridge->heard.empty(); });
  bool answered = false;
  page->evaluateJavaScript("1", [&](const Result<JSONAny>&) { answered = true; });
  page->removeFromSuperview();
  page = nullptr;
  const auto heard = bridge->heard.size();
  passFrames(30);
  EXPECT_EQ(bridge->heard.size(), heard);
  EXPECT_FALSE(answered);
}

}  // namespace
}  // namespace VorselKelp::webkit
