#include "collection_server/SampleDocuments.h"

#include "VorselKelp/JSONAny.h"
#include "collection_server/CollectionServer.h"

namespace collection_server {

using VorselKelp::JSONAny;

std::string sampleConfiguration() {
  return R"({"push_config":{"prompts":[]},"analytics":{"enabled":true},"consent":{"enabled":true}})";
}

std::string promptingConfiguration() {
  return R"({"push_config":{"prompts":[{"prompt":"popup","options":{)"
         R"("state_text_prompt":"News as it happens?",)"
         R"("description":"Storm warnings, ferries and the evening edition. You can stop it at any time.",)"
         R"("state_button_positive_prompt":"Yes, please","state_button_negative_prompt":"Not now",)"
         R"("button_color":"#1b3a57","button_text_color":"#ffffff","text_color":"#222222"}}]},)"
         R"("analytics":{"enabled":true},"consent":{"enabled":true}})";
}

std::string sampleArticle(const std::string& server) {
  return "<!DOCTYPE html><html lang=\"en\"><head><meta charset=\"utf-8\"><title>Storm over the bay</title>"
         "<style>body{font:16px sans-serif;margin:24px;color:#222}img{width:100%;border-radius:8px}"
         "h1{font-size:24px}</style></head><body><h1>Storm over the bay</h1><img src=\"" +
         server +
         "/images/storm.png\" alt=\"\"><p>Gusts of 110 km/h are expected tonight. Ferries stay in port until "
         "tomorrow morning.</p></body></html>";
}

std::string samplePromptScript() {
  return R"JS((function () {
  function first(prompts) {
    return (prompts || []).filter(function (each) { return each.prompt !== "native"; })[0];
  }
  function fire(name, data) {
    var event = new Event(name);
    if (data) event.vsData = data;
    window.dispatchEvent(event);
  }
  function button(text, background, color, act) {
    var made = document.createElement("button");
    made.textContent = text;
    made.style.cssText = "flex:1;padding:12px;border:0;border-radius:10px;font:600 15px sans-serif;background:" +
      background + ";color:" + color;
    made.addEventListener("click", act);
    return made;
  }
  function show() {
    var prompt = first((window._VSPC && window._VSPC.push_config || {}).prompts);
    if (!prompt) return;
    var options = prompt.options || {};
    var shade = document.createElement("div");
    shade.style.cssText = "position:fixed;inset:0;background:rgba(0,0,0,.35);display:flex;align-items:flex-end";
    var card = document.createElement("div");
    card.style.cssText = "box-sizing:border-box;width:100%;margin:16px;padding:20px;border-radius:18px;" +
      "background:#fff;font:15px sans-serif;color:" + (options.text_color || "#222");
    var title = document.createElement("div");
    title.style.cssText = "font:700 19px sans-serif;margin-bottom:8px";
    title.textContent = options.state_text_prompt || "Allow notifications?";
    var text = document.createElement("div");
    text.style.cssText = "margin-bottom:18px;line-height:1.4";
    text.textContent = options.description || "";
    var row = document.createElement("div");
    row.style.cssText = "display:flex;gap:10px";
    row.append(
      button(options.state_button_negative_prompt || "No", "#eee", "#222",
        function () { fire("pns.htmlCancel"); }),
      button(options.state_button_positive_prompt || "Yes", options.button_color || "#06c",
        options.button_text_color || "#fff", function () { fire("pns.htmlOK", { prompt: prompt.prompt }); }));
    card.append(title, text, row);
    shade.append(card);
    document.body.append(shade);
  }
  if (document.readyState === "loading") document.addEventListener("DOMContentLoaded", show);
  else show();
})();
)JS";
}

std::string sampleAd(const std::string& server) {
  const JSONAny creative = JSONAny::Dictionary{
      {"l2", "slot-7"},
      {"img", server + "/images/ad.png"},
      {"cmpid", 7},
      {"url", server + "/ad/landing"},
      {"title", "A quiet weekend by the sea"},
      {"cpm_t", JSONAny::List{server + "/ad/impression?l2=${l2}"}},
      {"cpv_t", JSONAny::List{server + "/ad/view?l2=${l2}"}},
      {"cpc_t", JSONAny::List{server + "/ad/click?l2=${l2}"}},
      {"creid", 11},
  };
  const JSONAny item = JSONAny::Dictionary{{"md", creative}, {"s", true}, {"w", 390}, {"h", 844}};
  const JSONAny ad = JSONAny::Dictionary{
      {"items", JSONAny::List{item}}, {"session_id", "feed-session"}, {"elapsed", 3}, {"ts", "0"}};
  const auto text = ad.encode();
  return text ? *text : std::string();
}

}  // namespace collection_server
