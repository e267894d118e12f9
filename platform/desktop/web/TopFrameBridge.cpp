#include "web/TopFrameBridge.h"

#include <glib.h>

namespace VorselKelp::desktop {
namespace {

std::string secretName() {
  // A version 4 UUID comes from the system's own source of randomness.
  gchar* uuid = g_uuid_string_random();
  std::string name = "v";
  for (const char* c = uuid; *c != '\0'; ++c) {
    if (*c != '-') name += *c;
  }
  g_free(uuid);
  return name;
}

}  // namespace

TopFrameBridge TopFrameBridge::make() {
  TopFrameBridge bridge;
  bridge.event_ = secretName();
  bridge.world = "relay-" + secretName();
  bridge.handler = "relay";
  // Says that it took a message by preventing the event's default, and that it is there by an event of its
  // own: the worlds' scripts start in no particular order.
  bridge.relay =
      "document.addEventListener('" + bridge.event_ +
      "',function(e){e.preventDefault();window.webkit.messageHandlers.relay.postMessage(e.detail)},"
      "true);document.dispatchEvent(new Event('" +
      bridge.event_ + "r'))";
  return bridge;
}

std::string TopFrameBridge::shim(const std::vector<std::string>& names) const {
  std::string list;
  for (const auto& name : names) {
    list += list.empty() ? "\"" : ",\"";
    for (const char c : name) {
      if (c == '"' || c == '\\') list += '\\';
      list += c;
    }
    list += '"';
  }
  // What it needs is taken from the page's names before the page can change them.
  return "(function(){var C=CustomEvent,J=JSON.stringify,dispatch=document.dispatchEvent.bind(document),"
         "early=[],h={};"
         "function send(text){return !dispatch(new C('" +
         event_ +
         "',{detail:text,cancelable:true}))}"
         "document.addEventListener('" +
         event_ +
         "r',function(){early.splice(0).forEach(send)},true);"
         "[" +
         list +
         "].forEach(function(n){h[n]=Object.freeze({postMessage:function(b){"
         "var text=J([n,b===undefined?null:b]);send(text)||early.push(text)}})});"
         "Object.defineProperty(window,'webkit',{value:Object.freeze({messageHandlers:Object.freeze(h)})})})("
         ")";
}

}  // namespace VorselKelp::desktop
