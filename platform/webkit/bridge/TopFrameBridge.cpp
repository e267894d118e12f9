#include "bridge/TopFrameBridge.h"

#include <glib.h>

#include "VorselKelp/JSONAny.h"
#include "bridge/relay.js.h"
#include "bridge/shim.js.h"

namespace VorselKelp::webkit {
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
  bridge.relay = std::string(relayScript) + "('" + bridge.event_ + "')";
  return bridge;
}

std::string TopFrameBridge::shim(const std::vector<std::string>& names) const {
  const auto list = JSONAny(JSONAny::List(names.begin(), names.end())).encode();
  return std::string(shimScript) + "('" + event_ + "'," + (list ? *list : "[]") + ")";
}

}  // namespace VorselKelp::webkit
