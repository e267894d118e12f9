#include "prompt/PromptPage.h"

namespace VorselKelp {
namespace {

// The page in three pieces, so that no text put between them is ever searched for a place to put another.

constexpr std::string_view untilScriptHost = R"html(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="UTF-8">
<meta name="viewport" content="width=device-width, initial-scale=1.0">
<meta http-equiv="X-UA-Compatible" content="ie=edge">
<script async src=")html";

// The listeners come before the configuration: where that fails at run time, the page can still be left.
constexpr std::string_view untilConfiguration = R"html(/v2/mobile.js"></script>
</head>
<body>
<script>
if (window.webkit && window.webkit.messageHandlers && window.webkit.messageHandlers.JSBridge) {
  (function (bridge, serialize) {
    window.addEventListener("pns.htmlOK", function (event) {
      var data = event.vsData === undefined || event.vsData === null ? {} : event.vsData;
      bridge.postMessage(serialize({ event: "pns.ok", data: data }));
    }, true);
    window.addEventListener("pns.htmlCancel", function () {
      bridge.postMessage(serialize({ event: "pns.cancel" }));
    }, true);
  })(window.webkit.messageHandlers.JSBridge, JSON.stringify);
  var _VSPC = )html";

constexpr std::string_view rest = R"html(;
}
</script>
</body>
</html>
)html";

// A page that writes something odd to its console must not fail for being listened to: a value that has no
// JSON form, such as one that contains itself, is written by its kind.
constexpr std::string_view consoleScript = R"js((function () {
  var longest = 3000;

  function described(value) {
    if (value === undefined) return "undefined";
    try {
      return String(typeof value === "object" ? JSON.stringify(value) : value);
    } catch (error) {
      return Object.prototype.toString.call(value);
    }
  }

  function log(emoji, type, args) {
    var texts = Array.prototype.map.call(args, function (value) {
      return described(value).substring(0, longest);
    });
    window.webkit.messageHandlers.logging.postMessage(emoji + " JS " + type + ": " + texts.join(", "));
  }

  function forward(name, emoji, type) {
    var previous = console[name];
    console[name] = function () {
      log(emoji, type, arguments);
      previous.apply(console, arguments);
    };
  }

  forward("log", "📗", "log");
  forward("warn", "📙", "warning");
  forward("error", "📕", "error");
  forward("debug", "📘", "debug");

  window.addEventListener("error", function (event) {
    var place = event.filename + ":" + event.lineno + ":" + event.colno;
    log("💥", "Uncaught", [event.message + " at " + place]);
  });
})();
)js";

}  // namespace

std::string promptPage(std::string_view scriptHost, std::string_view configuration) {
  std::string page;
  page.reserve(untilScriptHost.size() + scriptHost.size() + untilConfiguration.size() + configuration.size() +
               rest.size());
  page.append(untilScriptHost).append(scriptHost).append(untilConfiguration);
  return page.append(configuration).append(rest);
}

std::string_view consoleForwardingScript() {
  return consoleScript;
}

}  // namespace VorselKelp
