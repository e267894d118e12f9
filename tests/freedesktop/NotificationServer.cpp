#include "freedesktop/NotificationServer.h"

#include <utility>

namespace VorselKelp::freedesktop {
namespace {

constexpr const char* name = "org.freedesktop.Notifications";
constexpr const char* object = "/org/freedesktop/Notifications";

// What Notify answers is left open: a bad server may send anything.
constexpr const char* interfaces = R"(<node><interface name='org.freedesktop.Notifications'>
  <method name='GetCapabilities'><arg direction='out' type='as'/></method>
  <method name='GetServerInformation'>
    <arg direction='out' type='s'/><arg direction='out' type='s'/><arg direction='out' type='s'/>
    <arg direction='out' type='s'/>
  </method>
  <method name='CloseNotification'><arg direction='in' type='u'/></method>
  <method name='Notify'>
    <arg direction='in' type='s'/><arg direction='in' type='u'/><arg direction='in' type='s'/>
    <arg direction='in' type='s'/><arg direction='in' type='s'/><arg direction='in' type='as'/>
    <arg direction='in' type='a{sv}'/><arg direction='in' type='i'/>
  </method>
</interface></node>)";

void reply(GDBusMethodInvocation* invocation, GVariant* answer) {
  // Not through the invocation: that would hold the answer to one declared type.
  GDBusMessage* message = g_dbus_message_new_method_reply(g_dbus_method_invocation_get_message(invocation));
  g_dbus_message_set_body(message, answer);
  g_dbus_connection_send_message(g_dbus_method_invocation_get_connection(invocation), message,
                                 G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
  g_object_unref(message);
  g_object_unref(invocation);
}

}  // namespace

NotificationServer::NotificationServer(const std::string& address) : service_(address, name) {
  service_.serve(object, interfaces,
                 [this](const std::string&, const std::string& method, GVariant* arguments,
                        GDBusMethodInvocation* invocation) { called(method, arguments, invocation); });
  service_.own();
}

NotificationServer::~NotificationServer() {
  for (const auto& [number, invocation] : held_) g_object_unref(invocation);
}

void NotificationServer::called(const std::string& method, GVariant* arguments,
                                GDBusMethodInvocation* invocation) {
  if (method == "Notify") return notify(arguments, invocation);
  if (method == "CloseNotification") {
    g_variant_get(arguments, "(u)", &closed.emplace_back());
    return reply(invocation, g_variant_new("()"));
  }
  if (method == "GetServerInformation")
    return reply(invocation, g_variant_new("(ssss)", "desk", "the test's", "1.5", "1.2"));
  GVariantBuilder names;
  g_variant_builder_init(&names, G_VARIANT_TYPE("as"));
  for (const auto& ability : abilities) g_variant_builder_add(&names, "s", ability.c_str());
  reply(invocation, g_variant_new("(as)", &names));
}

void NotificationServer::notify(GVariant* arguments, GDBusMethodInvocation* invocation) {
  Shown notification{};
  const char* title = nullptr;
  const char* body = nullptr;
  GVariantIter* actions = nullptr;
  g_variant_get(arguments, "(&su&s&s&sas@a{sv}i)", nullptr, &notification.replaced, nullptr, &title, &body,
                &actions, nullptr, nullptr);
  const char* action = nullptr;
  while (g_variant_iter_next(actions, "&s", &action)) notification.actions.emplace_back(action);
  g_variant_iter_free(actions);
  notification.title = title;
  notification.body = body;
  notification.number = notification.replaced ? notification.replaced : ++last_;
  shown.push_back(notification);
  if (!refusal.empty())
    return g_dbus_method_invocation_return_dbus_error(invocation, refusal.c_str(), "No\nmore");
  if (answersWrong) return reply(invocation, g_variant_new("(s)", "thank you"));
  held_.emplace_back(notification.number, invocation);
  if (!holds) release();
}

void NotificationServer::release() {
  for (const auto& [number, invocation] : std::exchange(held_, {}))
    reply(invocation, g_variant_new("(u)", number));
}

void NotificationServer::invoke(std::uint32_t number, const std::string& key) {
  emit("ActionInvoked", g_variant_new("(us)", number, key.c_str()));
}

void NotificationServer::close(std::uint32_t number, std::uint32_t reason) {
  emit("NotificationClosed", g_variant_new("(uu)", number, reason));
}

void NotificationServer::emit(const char* signal, GVariant* arguments) {
  service_.emit(object, name, signal, arguments);
}

}  // namespace VorselKelp::freedesktop
