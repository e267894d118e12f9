#include <webkit/webkit.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "VorselKelpWebKit/WebViews.h"
#include "prompt/PromptPage.h"
#include "screen/Figures.h"

namespace VorselKelp::benchmarks {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int rounds = 15;

/// The page that the library shows, which posts as soon as it can. Its script's host answers nothing.
std::string page() {
  return promptPage("http://127.0.0.1:59999", "{};window.dispatchEvent(new Event('pns.htmlOK'))");
}

struct Ear final : ui::ScriptMessageHandler {
  void didReceive(const std::string&, const JSONAny&) override { heard = true; }
  bool heard = false;
};

template <class Heard>
double waitFor(Clock::time_point start, Heard heard) {
  while (!heard()) g_main_context_iteration(nullptr, TRUE);
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double ours(GtkWindow* window) {
  const auto ear = std::make_shared<Ear>();
  ui::WebViewConfiguration configuration;
  configuration.userScripts.push_back({std::string(consoleForwardingScript()), true});
  configuration.messageHandlers.push_back({"logging", std::make_shared<Ear>()});
  const auto start = Clock::now();
  const auto view = webkit::makeWebView(std::move(configuration));
  view->addMessageHandler("JSBridge", ear);
  gtk_window_set_child(window, view->widget());
  view->loadHTMLString(page(), std::nullopt);
  const auto time = waitFor(start, [&] { return ear->heard; });
  gtk_window_set_child(window, nullptr);
  return time;
}

double bare(GtkWindow* window) {
  bool heard = false;
  const auto start = Clock::now();
  auto* content = webkit_user_content_manager_new();
  g_signal_connect(content, "script-message-received::JSBridge",
                   G_CALLBACK(+[](WebKitUserContentManager*, JSCValue*, bool* flag) { *flag = true; }),
                   &heard);
  webkit_user_content_manager_register_script_message_handler(content, "JSBridge", nullptr);
  auto* session = webkit_network_session_new_ephemeral();
  auto* view = GTK_WIDGET(g_object_new(WEBKIT_TYPE_WEB_VIEW, "user-content-manager", content,
                                       "network-session", session, nullptr));
  gtk_window_set_child(window, view);
  webkit_web_view_load_html(WEBKIT_WEB_VIEW(view), page().c_str(), nullptr);
  const auto time = waitFor(start, [&] { return heard; });
  g_signal_handlers_disconnect_by_data(content, &heard);
  gtk_window_set_child(window, nullptr);
  g_object_unref(content);
  g_object_unref(session);
  return time;
}

double median(std::vector<double> times) {
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::ranges::nth_element(times, middle);
  return *middle;
}

}  // namespace

std::optional<Line> promptMessage() {
  if (!gtk_init_check()) return std::nullopt;
  auto* window = GTK_WINDOW(gtk_window_new());
  gtk_window_set_default_size(window, 390, 844);
  gtk_window_present(window);
  std::vector<double> own;
  std::vector<double> floor;
  bare(window);  // the engine's first start
  for (int round = 0; round < rounds; ++round) {
    own.push_back(ours(window));
    floor.push_back(bare(window));
  }
  gtk_window_destroy(window);
  return Line{"permission page, from showing it to its message", "ms", median(own), median(floor), 1.2};
}

}  // namespace VorselKelp::benchmarks
