#include "bridge/TopFrameBridge.h"

#include <gmock/gmock.h>
#include <jsc/jsc.h>

#include <memory>

namespace VorselKelp::webkit {
namespace {

/// As much of a page as the two scripts touch; `handed` is what the relay hands on.
constexpr const char* page = R"js(
  var window = this, handed = [], listeners = {};
  function Event(type) { this.type = type; this.prevented = false; }
  Event.prototype.preventDefault = function () { this.prevented = true; };
  function CustomEvent(type, more) { Event.call(this, type); this.detail = more.detail; }
  CustomEvent.prototype = Object.create(Event.prototype);
  var document = {
    addEventListener: function (type, listener) { (listeners[type] = listeners[type] || []).push(listener); },
    dispatchEvent: function (event) {
      (listeners[event.type] || []).forEach(function (listener) { listener(event); });
      return !event.prevented;
    },
  };
  // The relay's world has a window of its own.
  function inRelayWorld(script) {
    var window = { webkit: { messageHandlers: { relay: { postMessage: function (t) { handed.push(t); } } } } };
    eval(script);
  }
)js";

class TopFrameBridgeTest : public testing::Test {
 protected:
  TopFrameBridgeTest() { run(page); }

  std::string run(const std::string& script) {
    const std::unique_ptr<JSCValue, decltype(&g_object_unref)> value(
        jsc_context_evaluate(context_.get(), script.c_str(), -1), g_object_unref);
    const std::unique_ptr<char, decltype(&g_free)> text(jsc_value_to_string(value.get()), g_free);
    const auto* thrown = jsc_context_get_exception(context_.get());
    return thrown ? jsc_exception_get_message(const_cast<JSCException*>(thrown)) : text.get();
  }
  void relay() {
    const std::unique_ptr<JSCValue, decltype(&g_object_unref)> script(
        jsc_value_new_string(context_.get(), bridge_.relay.c_str()), g_object_unref);
    jsc_context_set_value(context_.get(), "relayText", script.get());
    EXPECT_EQ(run("inRelayWorld(relayText)"), "undefined");
  }
  std::string handed() { return run("handed.splice(0).join(' ')"); }

  const std::unique_ptr<JSCContext, decltype(&g_object_unref)> context_{jsc_context_new(), g_object_unref};
  const TopFrameBridge bridge_ = TopFrameBridge::make();
};

TEST_F(TopFrameBridgeTest, HandsMessagesOnWhicheverScriptStartsFirst) {
  run(bridge_.shim({"a", "q\"\\u"}));
  run("webkit.messageHandlers.a.postMessage({n: 1}); webkit.messageHandlers['q\"\\\\u'].postMessage()");
  EXPECT_EQ(handed(), "");
  relay();
  EXPECT_EQ(handed(), R"(["a",{"n":1}] ["q\"\\u",null])");
  run("webkit.messageHandlers.a.postMessage('later')");
  EXPECT_EQ(handed(), R"(["a","later"])");
}

TEST_F(TopFrameBridgeTest, APageCanNotChangeWhatItUses) {
  relay();
  run(bridge_.shim({"a"}));
  run("JSON.stringify = CustomEvent = document.dispatchEvent = function () { return 'changed'; };"
      "webkit = {}; window.webkit.messageHandlers.a = null; window.webkit.messageHandlers.b = {};");
  run("webkit.messageHandlers.a.postMessage([1])");
  EXPECT_EQ(handed(), R"(["a",[1]])");
  EXPECT_EQ(run("Object.keys(webkit.messageHandlers).join()"), "a");
  EXPECT_NE(TopFrameBridge::make().relay, bridge_.relay) << "a name that can be guessed";
}

}  // namespace
}  // namespace VorselKelp::webkit
