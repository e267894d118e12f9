#include "freedesktop/PortalServer.h"

#include <map>

namespace VorselKelp::freedesktop {
namespace {

constexpr const char* portalObject = "/org/freedesktop/portal/desktop";
constexpr const char* portalInterface = "org.freedesktop.portal.Notification";
constexpr const char* portalInterfaces = R"(<node>
  <interface name='org.freedesktop.portal.Notification'>
    <method name='AddNotification'><arg direction='in' type='s'/><arg direction='in' type='a{sv}'/></method>
    <method name='RemoveNotification'><arg direction='in' type='s'/></method>
  </interface>
  <interface name='org.freedesktop.portal.Background'>
    <method name='RequestBackground'>
      <arg direction='in' type='s'/><arg direction='in' type='a{sv}'/><arg direction='out' type='o'/>
    </method>
  </interface>
  <interface name='org.freedesktop.DBus.Properties'>
    <method name='Get'>
      <arg direction='in' type='s'/><arg direction='in' type='s'/><arg direction='out' type='v'/>
    </method>
  </interface>
</node>)";

struct Key {
  const char* type;
  std::uint32_t since;
};
const std::map<std::string, Key> keys{{"title", {"s", 1}},          {"body", {"s", 1}},
                                      {"priority", {"s", 1}},       {"icon", {"(sv)", 1}},
                                      {"default-action", {"s", 1}}, {"default-action-target", {"*", 1}},
                                      {"buttons", {"aa{sv}", 1}},   {"sound", {"s", 2}}};

std::string requestPath(const std::string& token) {
  return std::string(portalObject) + "/request/1_7/" + token;
}

std::string iconBytes(GVariant* icon) {
  const char* kind = nullptr;
  GVariant* boxed = nullptr;
  g_variant_get(icon, "(&sv)", &kind, &boxed);
  const VariantPtr bytes(boxed);
  gsize size = 0;
  const auto* data = static_cast<const char*>(g_variant_get_fixed_array(boxed, &size, 1));
  return std::string(kind) == "bytes" ? std::string(data, size) : std::string();
}

}  // namespace

PortalServer::PortalServer(const std::string& address, std::uint32_t version)
    : version_(version), service_(address, "org.freedesktop.portal.Desktop") {
  service_.serve(portalObject, portalInterfaces,
                 [this](const std::string&, const std::string& method, GVariant* arguments,
                        GDBusMethodInvocation* invocation) { called(method, arguments, invocation); });
  service_.own();
}

void PortalServer::called(const std::string& method, GVariant* arguments, GDBusMethodInvocation* invocation) {
  if (method == "Get") {
    return g_dbus_method_invocation_return_value(invocation,
                                                 g_variant_new("(v)", g_variant_new_uint32(version_)));
  }
  std::string problem;
  if (method == "RequestBackground" && !refuses) return wished(arguments, invocation);
  if (method != "RemoveNotification") {
    problem = refuses ? "not allowed" : added(arguments);
  } else {
    const char* name = nullptr;
    g_variant_get(arguments, "(&s)", &name);
    calls.push_back("remove " + std::string(name));
  }
  if (problem.empty()) return g_dbus_method_invocation_return_value(invocation, nullptr);
  g_dbus_method_invocation_return_dbus_error(invocation, "org.freedesktop.portal.Error.InvalidArgument",
                                             problem.c_str());
}

std::string PortalServer::added(GVariant* arguments) {
  const char* name = nullptr;
  GVariantIter* entries = nullptr;
  g_variant_get(arguments, "(&sa{sv})", &name, &entries);
  std::string call = "add " + std::string(name);
  std::string problem;
  const char* key = nullptr;
  GVariant* value = nullptr;
  while (g_variant_iter_loop(entries, "{&sv}", &key, &value)) {
    const auto known = keys.find(key);
    if (known == keys.end() || known->second.since > version_ ||
        !g_variant_is_of_type(value, G_VARIANT_TYPE(known->second.type)))
      problem = "invalid key " + std::string(key);
    if (std::string(key) == "icon") icons.push_back(iconBytes(value));
    call += " " + std::string(key);
  }
  g_variant_iter_free(entries);
  if (problem.empty()) calls.push_back(call);
  return problem;
}

void PortalServer::wished(GVariant* arguments, GDBusMethodInvocation* invocation) {
  const VariantPtr options(g_variant_get_child_value(arguments, 1));
  const char* token = "";
  g_variant_lookup(options.get(), "handle_token", "&s", &token);
  wishes.push_back({token, TextPtr(g_variant_print(options.get(), FALSE)).get()});
  if (!results.empty()) respond(token, 0, results);
  g_dbus_method_invocation_return_value(invocation, g_variant_new("(o)", requestPath(token).c_str()));
}

void PortalServer::respond(const std::string& token, std::uint32_t outcome, const std::string& members) {
  service_.emit(
      requestPath(token), "org.freedesktop.portal.Request", "Response",
      g_variant_new("(u@a{sv})", outcome,
                    g_variant_parse(G_VARIANT_TYPE_VARDICT, members.c_str(), nullptr, nullptr, nullptr)));
}

void PortalServer::invoke(const std::string& name, const std::string& parameters) {
  GVariant* listed = g_variant_parse(G_VARIANT_TYPE("av"), parameters.c_str(), nullptr, nullptr, nullptr);
  ASSERT_NE(listed, nullptr) << parameters;
  service_.emit(portalObject, portalInterface, "ActionInvoked",
                g_variant_new("(ss@av)", name.c_str(), "notification-response", listed));
}

}  // namespace VorselKelp::freedesktop
