#include "freedesktop/BluezServer.h"

#include <utility>

namespace VorselKelp::freedesktop {
namespace {

constexpr const char* objectManager = "org.freedesktop.DBus.ObjectManager";
constexpr const char* rootInterfaces = R"(<node><interface name='org.freedesktop.DBus.ObjectManager'>
  <method name='GetManagedObjects'><arg direction='out' type='a{oa{sa{sv}}}'/></method>
</interface></node>)";
constexpr const char* adapterInterfaces = R"(<node><interface name='org.bluez.Adapter1'>
  <method name='SetDiscoveryFilter'><arg direction='in' type='a{sv}'/></method>
  <method name='StartDiscovery'/>
</interface></node>)";

GVariant* interfaceMap(const char* interface, GVariant* properties) {
  return g_variant_new_parsed("{%s: %@a{sv}}", interface, properties);
}

}  // namespace

std::vector<std::uint8_t> beaconFrame(std::uint8_t lastOfUUID, std::uint16_t major, std::uint16_t minor) {
  std::vector<std::uint8_t> frame(16);
  frame[0] = 0x02;
  frame[1] = 0x15;
  for (const int byte :
       {3, static_cast<int>(lastOfUUID), major >> 8, major & 0xFF, minor >> 8, minor & 0xFF, 0xC5}) {
    frame.push_back(static_cast<std::uint8_t>(byte));
  }
  return frame;
}

VariantPtr deviceProperties(const std::vector<std::uint8_t>& frame, bool near, std::uint16_t company) {
  auto* bytes = g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, frame.data(), frame.size(), 1);
  GVariantDict properties;
  g_variant_dict_init(&properties, nullptr);
  g_variant_dict_insert_value(&properties, "ManufacturerData",
                              g_variant_new_parsed("{%q: <%@ay>}", company, bytes));
  if (near) g_variant_dict_insert(&properties, "RSSI", "n", -60);
  return hold(g_variant_dict_end(&properties));
}

BluezServer::BluezServer(const std::string& address) : service_(address, "org.bluez") {
  const auto methods = [this](const auto&... each) { call(each...); };
  service_.serve("/", rootInterfaces, methods);
  for (const auto* path : {"/org/bluez/hci0", "/org/bluez/hci1"})
    service_.serve(path, adapterInterfaces, methods);
  service_.own();
}

void BluezServer::place(const std::string& path, const char* interface, VariantPtr properties) {
  objects_.insert_or_assign(path, std::pair(interface, std::move(properties)));
}

void BluezServer::placeAdapter(const std::string& path) {
  place(path, "org.bluez.Adapter1", hold(g_variant_new_parsed("{'Powered': <true>}")));
}

void BluezServer::add(const std::string& path, const char* interface, const VariantPtr& properties) {
  emit("/", objectManager, "InterfacesAdded",
       g_variant_new("(o@a{sa{sv}})", path.c_str(), interfaceMap(interface, properties.get())));
  place(path, interface, VariantPtr(g_variant_ref(properties.get())));
}

void BluezServer::remove(const std::string& path, const char* interface) {
  objects_.erase(path);
  emit("/", objectManager, "InterfacesRemoved", g_variant_new_parsed("(%o, [%s])", path.c_str(), interface));
}

void BluezServer::change(const std::string& path, const char* interface, const VariantPtr& properties) {
  emit(path, "org.freedesktop.DBus.Properties", "PropertiesChanged",
       g_variant_new("(s@a{sv}as)", interface, properties.get(), nullptr));
}

void BluezServer::emit(const std::string& path, const char* interface, const char* signal,
                       GVariant* arguments) {
  service_.emit(path, interface, signal, arguments);
}

void BluezServer::call(const std::string& path, const std::string& method, GVariant* arguments,
                       GDBusMethodInvocation* invocation) {
  client = g_dbus_method_invocation_get_sender(invocation);
  if (method == "GetManagedObjects")
    return g_dbus_method_invocation_return_value(invocation, g_variant_new("(@a{oa{sa{sv}}})", objects()));
  called.push_back(path + " " + method + " " + TextPtr(g_variant_print(arguments, FALSE)).get());
  if (method == "StartDiscovery" && !refusal.empty())
    return g_dbus_method_invocation_return_dbus_error(invocation, refusal.c_str(), "refused");
  g_dbus_method_invocation_return_value(invocation, nullptr);
}

GVariant* BluezServer::objects() const {
  GVariantBuilder all;
  g_variant_builder_init(&all, G_VARIANT_TYPE("a{oa{sa{sv}}}"));
  for (const auto& [path, object] : objects_)
    g_variant_builder_add(&all, "{o@a{sa{sv}}}", path.c_str(),
                          interfaceMap(object.first, object.second.get()));
  return g_variant_builder_end(&all);
}

}  // namespace VorselKelp::freedesktop
