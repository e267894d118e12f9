#include "unifiedpush/Connector.h"

#include <memory>
#include <utility>

namespace VorselKelp::agent {
namespace {

constexpr const char* connectorPath = "/org/unifiedpush/Connector";

constexpr const char* firstConnector = R"(<node><interface name="org.unifiedpush.Connector1">
  <method name="Message"><arg type="s" direction="in"/><arg type="ay" direction="in"/><arg type="s" direction="in"/></method>
  <method name="NewEndpoint"><arg type="s" direction="in"/><arg type="s" direction="in"/></method>
  <method name="Unregistered"><arg type="s" direction="in"/></method>
</interface></node>)";

constexpr const char* secondConnector = R"(<node><interface name="org.unifiedpush.Connector2">
  <method name="Message"><arg type="a{sv}" direction="in"/><arg type="a{sv}" direction="out"/></method>
  <method name="NewEndpoint"><arg type="a{sv}" direction="in"/><arg type="a{sv}" direction="out"/></method>
  <method name="Unregistered"><arg type="a{sv}" direction="in"/><arg type="a{sv}" direction="out"/></method>
</interface></node>)";

/// What a call brings, whatever its version; what is missing is empty.
struct Brought {
  std::string token;
  std::string endpoint;
  std::string bytes;
  std::string id;
};

std::string textOf(GVariant* value) {
  return g_variant_get_string(value, nullptr);
}

std::string bytesOf(GVariant* value) {
  gsize count = 0;
  const auto* bytes = static_cast<const char*>(g_variant_get_fixed_array(value, &count, 1));
  return bytes ? std::string(bytes, count) : std::string();
}

VariantPtr child(GVariant* arguments, gsize index) {
  return VariantPtr(g_variant_get_child_value(arguments, index));
}

Brought readFirst(const Call& call) {
  Brought brought;
  brought.token = textOf(child(call.arguments, 0).get());
  if (call.method == "NewEndpoint") brought.endpoint = textOf(child(call.arguments, 1).get());
  if (call.method == "Message") {
    brought.bytes = bytesOf(child(call.arguments, 1).get());
    brought.id = textOf(child(call.arguments, 2).get());
  }
  return brought;
}

Brought readSecond(const Call& call) {
  const auto members = child(call.arguments, 0);
  const auto look = [&](const char* key, const GVariantType* type) {
    return VariantPtr(g_variant_lookup_value(members.get(), key, type));
  };
  Brought brought;
  if (const auto token = look("token", G_VARIANT_TYPE_STRING)) brought.token = textOf(token.get());
  if (const auto endpoint = look("endpoint", G_VARIANT_TYPE_STRING))
    brought.endpoint = textOf(endpoint.get());
  if (const auto bytes = look("message", G_VARIANT_TYPE_BYTESTRING)) brought.bytes = bytesOf(bytes.get());
  if (const auto id = look("id", G_VARIANT_TYPE_STRING)) brought.id = textOf(id.get());
  return brought;
}

VariantPtr nothing(bool second) {
  return freedesktop::hold(second ? g_variant_new("(a{sv})", nullptr) : g_variant_new("()"));
}

void handle(const ConnectorEvents& events, Call call, bool second) {
  auto brought = second ? readSecond(call) : readFirst(call);
  if (call.method == "Message") {
    return events.message(call.sender, brought.token, std::move(brought.bytes), brought.id,
                          [answer = std::move(call.answer), second](const Status& status) mutable {
                            answer(status ? Result<VariantPtr>(nothing(second)) : status.error());
                          });
  }
  auto heard = [answer = std::move(call.answer), second]() mutable { answer(nothing(second)); };
  if (call.method == "NewEndpoint")
    return events.newEndpoint(call.sender, brought.token, brought.endpoint, std::move(heard));
  events.unregistered(call.sender, brought.token, std::move(heard));
}

}  // namespace

Status serveConnector(Bus& bus, ConnectorEvents events) {
  const auto shared = std::make_shared<const ConnectorEvents>(std::move(events));
  const auto first = bus.serve(connectorPath, firstConnector,
                               [shared](Call call) { handle(*shared, std::move(call), false); });
  if (!first) return first;
  return bus.serve(connectorPath, secondConnector,
                   [shared](Call call) { handle(*shared, std::move(call), true); });
}

}  // namespace VorselKelp::agent
