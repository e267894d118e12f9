#include "pages/EngineWebView.h"

#include <string_view>
#include <utility>

namespace VorselKelp::webkit {
namespace {

using freedesktop::ObjectPtr;

/// What the engine shows in the place of a page that it refuses to load.
constexpr const char* blankPage = "about:blank";

/// How long a load that was cancelled may wait for the one that takes its place.
constexpr guint successionMilliseconds = 250;

struct PendingScript {
  std::weak_ptr<ui::View> view;
  std::function<void(Result<JSONAny>)> answer;
};

std::string takeText(char* text) {
  std::string taken = text != nullptr ? text : "";
  g_free(text);
  return taken;
}

Result<JSONAny> valueOf(JSCValue* value) {
  if (jsc_value_is_string(value)) return JSONAny(takeText(jsc_value_to_string(value)));
  char* json = jsc_value_to_json(value, 0);
  if (json == nullptr) return JSONAny();
  return JSONAny::decode(takeText(json));
}

void scriptEnded(GObject* source, GAsyncResult* outcome, gpointer data) {
  const std::unique_ptr<PendingScript> pending(static_cast<PendingScript*>(data));
  GError* error = nullptr;
  ObjectPtr<JSCValue> value(
      webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(source), outcome, &error));
  const Error failure{error != nullptr ? error->message : "the script gave nothing"};
  g_clear_error(&error);
  const auto keep = pending->view.lock();
  if (!keep) return;
  pending->answer(value ? valueOf(value.get()) : Result<JSONAny>(failure));
}

WebKitWebView* newView(const ui::WebViewConfiguration& configuration, WebKitUserContentManager* content) {
  ObjectPtr<WebKitSettings> settings(webkit_settings_new());
  webkit_settings_set_enable_javascript(settings.get(), configuration.javaScriptEnabled);
  webkit_settings_set_javascript_can_open_windows_automatically(
      settings.get(), configuration.javaScriptCanOpenWindowsAutomatically);
  ObjectPtr<WebKitNetworkSession> session(webkit_network_session_new_ephemeral());
  auto* view = WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "user-content-manager", content, "settings",
                                            settings.get(), "network-session", session.get(), nullptr));
  g_object_ref_sink(view);
  return view;
}

}  // namespace

EngineWebView::EngineWebView(ui::WebViewConfiguration configuration, PageEvents events)
    : configuration_(std::move(configuration)),
      events_(std::move(events)),
      content_(webkit_user_content_manager_new()),
      view_(newView(configuration_, content_.get())) {
  connect();
}

EngineWebView::~EngineWebView() {
  if (timeout_ != 0) g_source_remove(timeout_);
  if (succession_ != 0) g_source_remove(succession_);
  g_signal_handlers_disconnect_by_data(view_, this);
  g_signal_handlers_disconnect_by_data(content_.get(), this);
  if (gtk_widget_get_parent(widget()) != nullptr) gtk_widget_unparent(widget());
  g_object_unref(view_);
}

void EngineWebView::connect() {
  // Connected before it is registered: a message may come at once.
  g_signal_connect(content_.get(), ("script-message-received::" + bridge_.handler).c_str(),
                   G_CALLBACK(&EngineWebView::onMessage), this);
  webkit_user_content_manager_register_script_message_handler(content_.get(), bridge_.handler.c_str(),
                                                              bridge_.world.c_str());
  g_signal_connect(view_, "load-changed", G_CALLBACK(&EngineWebView::onLoad), this);
  g_signal_connect(view_, "load-failed", G_CALLBACK(&EngineWebView::onFailure), this);
  g_signal_connect(view_, "decide-policy", G_CALLBACK(&EngineWebView::onPolicy), this);
  g_signal_connect(view_, "web-process-terminated", G_CALLBACK(&EngineWebView::onTermination), this);
}

void EngineWebView::addMessageHandler(const std::string& name,
                                      std::weak_ptr<ui::ScriptMessageHandler> handler) {
  configuration_.messageHandlers.push_back({name, std::move(handler)});
}

std::vector<std::string> EngineWebView::handlerNames() const {
  std::vector<std::string> names;
  for (const auto& entry : configuration_.messageHandlers) names.push_back(entry.name);
  return names;
}

/// Never null.
std::shared_ptr<void> EngineWebView::newLoad() const {
  auto load = events_.loading ? events_.loading() : nullptr;
  return load ? load : std::make_shared<int>();
}

void EngineWebView::showBackground() {
  const auto& color = scrollBackgroundColor.get();
  const GdkRGBA background{static_cast<float>(color.red), static_cast<float>(color.green),
                           static_cast<float>(color.blue), opaque ? 1 : static_cast<float>(color.alpha)};
  webkit_web_view_set_background_color(view_, &background);
}

void EngineWebView::beginLoad(std::string url) {
  showBackground();
  webkit_user_content_manager_remove_all_scripts(content_.get());
  const auto add = [&](const std::string& source, bool topOnly, const char* world) {
    const auto frames =
        topOnly ? WEBKIT_USER_CONTENT_INJECT_TOP_FRAME : WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES;
    auto* script = world != nullptr ? webkit_user_script_new_for_world(
                                          source.c_str(), frames, WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START,
                                          world, nullptr, nullptr)
                                    : webkit_user_script_new(source.c_str(), frames,
                                                             WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START,
                                                             nullptr, nullptr);
    webkit_user_content_manager_add_script(content_.get(), script);
    webkit_user_script_unref(script);
  };
  if (!configuration_.messageHandlers.empty()) {
    add(bridge_.relay, true, bridge_.world.c_str());
    add(bridge_.shim(handlerNames()), true, nullptr);
  }
  for (const auto& script : configuration_.userScripts) add(script.source, script.mainFrameOnly, nullptr);
  if (timeout_ != 0) g_source_remove(std::exchange(timeout_, 0));
  if (succession_ != 0) g_source_remove(std::exchange(succession_, 0));
  asked_ = std::move(url);
  started_ = false;
  loading_ = newLoad();
}

void EngineWebView::loadHTMLString(const std::string& html, const std::optional<std::string>& baseUrl) {
  beginLoad(baseUrl.value_or(blankPage));
  webkit_web_view_load_html(view_, html.c_str(), baseUrl ? baseUrl->c_str() : nullptr);
}

void EngineWebView::load(const std::string& url, double timeout) {
  beginLoad(url);
  timeout_ = g_timeout_add(
      static_cast<guint>(timeout * 1000),
      [](gpointer data) -> gboolean {
        auto& self = *static_cast<EngineWebView*>(data);
        self.timeout_ = 0;
        const Error error{"The page did not answer in time"};
        const auto keep = self.shared_from_this();
        self.endLoad(&error);
        webkit_web_view_stop_loading(self.view_);
        return G_SOURCE_REMOVE;
      },
      this);
  webkit_web_view_load_uri(view_, url.c_str());
}

/// Each load ends once, whatever the engine still says about it.
void EngineWebView::endLoad(const Error* error) {
  if (!loading_) return;
  auto load = std::exchange(loading_, nullptr);
  if (timeout_ != 0) g_source_remove(std::exchange(timeout_, 0));
  const auto keep = shared_from_this();
  if (const auto delegate = navigationDelegate()) {
    if (error != nullptr) {
      delegate->didFailNavigation(*error);
    } else {
      delegate->didFinishNavigation();
    }
  }
  if (events_.loaded) events_.loaded(*this, handlerNames(), std::move(load));
}

void EngineWebView::onLoad(WebKitWebView*, WebKitLoadEvent event, EngineWebView* self) {
  if (event == WEBKIT_LOAD_STARTED) self->started();
  // What comes before this load has started is about the one that it took the place of.
  if (!self->started_) return;
  if (event == WEBKIT_LOAD_COMMITTED) self->committed();
  if (event != WEBKIT_LOAD_FINISHED) return;
  if (self->cancelled_) return self->waitForSuccessor();
  self->endLoad(nullptr);
}

void EngineWebView::started() {
  if (succession_ != 0) g_source_remove(std::exchange(succession_, 0));
  started_ = true;
  cancelled_ = false;
  if (!loading_) loading_ = newLoad();  // the page has begun it
}

void EngineWebView::committed() {
  if (timeout_ != 0) g_source_remove(std::exchange(timeout_, 0));  // the page has answered
  const char* shown = webkit_web_view_get_uri(view_);
  if (shown == nullptr || shown != std::string_view(blankPage) || asked_ == blankPage) return;
  const Error error{"The page can't be shown: " + asked_};
  endLoad(&error);
}

/// Another load has taken its place, and starts in a moment; or the page has stopped its own, and what there
/// is of it is shown.
void EngineWebView::waitForSuccessor() {
  if (succession_ != 0 || !loading_) return;
  succession_ = g_timeout_add(
      successionMilliseconds,
      [](gpointer data) -> gboolean {
        auto& self = *static_cast<EngineWebView*>(data);
        self.succession_ = 0;
        const auto keep = self.shared_from_this();
        self.endLoad(nullptr);
        return G_SOURCE_REMOVE;
      },
      this);
}

gboolean EngineWebView::onFailure(WebKitWebView*, WebKitLoadEvent, const char*, GError* error,
                                  EngineWebView* self) {
  if (!self->started_) return TRUE;
  self->cancelled_ = g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED);
  if (self->cancelled_) return TRUE;
  const Error failure{error->message, error->code};
  self->endLoad(&failure);
  return TRUE;  // no page of the engine's about it
}

gboolean EngineWebView::onPolicy(WebKitWebView*, WebKitPolicyDecision* decision,
                                 WebKitPolicyDecisionType type, EngineWebView* self) {
  if (type != WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION) return FALSE;
  auto* action =
      webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
  const char* text = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
  const std::string url = text != nullptr ? text : "";
  const auto delegate = self->navigationDelegate();
  if (!delegate || delegate->allowsNavigation(url)) {
    if (self->started_) self->asked_ = url;
    return FALSE;
  }
  webkit_policy_decision_ignore(decision);
  const Error error{"The application does not let the page be shown"};
  if (!self->started_) self->endLoad(&error);  // the engine says no more about it
  return TRUE;
}

void EngineWebView::onTermination(WebKitWebView*, WebKitWebProcessTerminationReason, EngineWebView* self) {
  const Error error{"The page's process ended"};
  self->endLoad(&error);
}

void EngineWebView::onMessage(WebKitUserContentManager*, JSCValue* value, EngineWebView* self) {
  self->received(value);
}

void EngineWebView::received(JSCValue* value) {
  if (!jsc_value_is_string(value)) return;
  const auto message = JSONAny::decode(takeText(jsc_value_to_string(value)));
  const auto* parts = message ? message->as<JSONAny::List>() : nullptr;
  if (parts == nullptr || parts->size() != 2) return;
  const auto* name = parts->front().as<std::string>();
  if (name == nullptr) return;
  const auto keep = shared_from_this();
  for (const auto& entry : configuration_.messageHandlers) {
    if (entry.name != *name) continue;
    if (const auto handler = entry.handler.lock()) return handler->didReceive(*name, parts->back());
  }
}

void EngineWebView::evaluateJavaScript(const std::string& script,
                                       std::function<void(Result<JSONAny>)> answer) {
  webkit_web_view_evaluate_javascript(view_, script.c_str(), static_cast<gssize>(script.size()), nullptr,
                                      nullptr, nullptr, &scriptEnded,
                                      new PendingScript{weak_from_this(), std::move(answer)});
}

}  // namespace VorselKelp::webkit
