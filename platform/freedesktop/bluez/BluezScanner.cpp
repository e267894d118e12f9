#include "bluez/BluezScanner.h"

#include <string_view>
#include <utility>

#include "VorselKelpPosix/LineSink.h"
#include "bluez/BeaconFrame.h"

namespace VorselKelp::freedesktop {
namespace {

constexpr const char* bluez = "org.bluez";
constexpr const char* adapterInterface = "org.bluez.Adapter1";
constexpr const char* deviceInterface = "org.bluez.Device1";
constexpr const char* objectManager = "org.freedesktop.DBus.ObjectManager";

VariantPtr propertiesOf(GVariant* interfaces, const char* interface) {
  return VariantPtr(g_variant_lookup_value(interfaces, interface, G_VARIANT_TYPE_VARDICT));
}

/// Every advertisement of every low-energy device, not just the first.
VariantPtr discoveryFilter() {
  GVariantBuilder filter;
  g_variant_builder_init(&filter, G_VARIANT_TYPE("a{sv}"));
  g_variant_builder_add(&filter, "{sv}", "Transport", g_variant_new_string("le"));
  g_variant_builder_add(&filter, "{sv}", "DuplicateData", g_variant_new_boolean(TRUE));
  return hold(g_variant_new("(@a{sv})", g_variant_builder_end(&filter)));
}

}  // namespace

BluezScanner::BluezScanner(std::shared_ptr<Connection> connection, Seen seen)
    : connection_(std::move(connection)), seen_(std::move(seen)) {}

void BluezScanner::start() {
  if (std::exchange(started_, true)) return;
  listen();
  begin();
}

void BluezScanner::listen() {
  using Event = std::function<void(BluezScanner&, const std::string&, GVariant*)>;
  const auto on = [this](const SignalMatch& match, Event event) {
    connection_->listen(match, [weak = weak_from_this(), event = std::move(event)](const std::string& path,
                                                                                   GVariant* arguments) {
      if (const auto self = weak.lock()) event(*self, path, arguments);
    });
  };
  on({bluez, objectManager, "InterfacesAdded", nullptr, nullptr, "(oa{sa{sv}})"},
     [](auto& self, const auto&, auto* arguments) { self.interfacesAdded(arguments); });
  on({bluez, objectManager, "InterfacesRemoved", nullptr, nullptr, "(oas)"},
     [](auto& self, const auto&, auto* arguments) { self.interfacesRemoved(arguments); });
  for (const auto* interface : {deviceInterface, adapterInterface}) {
    on({bluez, "org.freedesktop.DBus.Properties", "PropertiesChanged", nullptr, interface, "(sa{sv}as)"},
       [](auto& self, const auto& path, auto* arguments) { self.propertiesChanged(path, arguments); });
  }
  on({"org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged", nullptr, bluez, "(sss)"},
     [](auto& self, const auto&, auto* arguments) { self.serviceChanged(arguments); });
}

void BluezScanner::ask(Method method, VariantPtr arguments, std::function<void(Result<VariantPtr>)> next) {
  connection_->call(
      std::move(method), std::move(arguments),
      [weak = weak_from_this(), beginning = beginnings_, next = std::move(next)](Result<VariantPtr> reply) {
        const auto self = weak.lock();
        if (self && self->beginnings_ == beginning) next(std::move(reply));
      });
}

void BluezScanner::begin() {
  ++beginnings_;
  scanning_ = false;
  adapter_.clear();
  ask({bluez, "/", objectManager, "GetManagedObjects", "(a{oa{sa{sv}}})"}, nullptr,
      [this](const Result<VariantPtr>& reply) {
        if (!reply) return complain(reply.error().description);
        const VariantPtr objects(g_variant_get_child_value(reply->get(), 0));
        objectsKnown(objects.get());
      });
}

void BluezScanner::objectsKnown(GVariant* objects) {
  std::string adapter;
  GVariantIter each;
  g_variant_iter_init(&each, objects);
  const char* path = nullptr;
  GVariant* value = nullptr;
  while (g_variant_iter_next(&each, "{&o@a{sa{sv}}}", &path, &value)) {
    const VariantPtr interfaces(value);
    const bool first = adapter.empty() || path < adapter;
    if (first && propertiesOf(value, adapterInterface)) adapter = path;
    // Without a signal strength the device is only remembered: it may be far away by now.
    const auto device = propertiesOf(value, deviceInterface);
    if (device && VariantPtr(g_variant_lookup_value(device.get(), "RSSI", nullptr))) sight(device.get());
  }
  if (adapter.empty()) return complain("there is no Bluetooth adapter");
  chooseAdapter(std::move(adapter));
}

void BluezScanner::chooseAdapter(std::string path) {
  adapter_ = std::move(path);
  ask({bluez, adapter_, adapterInterface, "SetDiscoveryFilter"}, discoveryFilter(),
      [this](const Result<VariantPtr>& reply) {
        if (!reply) return complain(reply.error().description);
        discover();
      });
}

void BluezScanner::discover() {
  ask({bluez, adapter_, adapterInterface, "StartDiscovery"}, nullptr,
      [this](const Result<VariantPtr>& reply) {
        // It looks for this process already: the adapter was switched off and on in between.
        scanning_ =
            reply || std::string_view(reply.error().description).starts_with("org.bluez.Error.InProgress");
        if (!scanning_) return complain(reply.error().description);
        complaint_.clear();
      });
}

void BluezScanner::complain(const std::string& reason) {
  if (std::exchange(complaint_, reason) == reason) return;
  posix::standardErrorLines()("No beacon can be found: " + reason);
}

void BluezScanner::interfacesAdded(GVariant* arguments) {
  const VariantPtr interfaces(g_variant_get_child_value(arguments, 1));
  if (const auto device = propertiesOf(interfaces.get(), deviceInterface)) sight(device.get());
  if (adapter_.empty() && propertiesOf(interfaces.get(), adapterInterface)) begin();
}

void BluezScanner::interfacesRemoved(GVariant* arguments) {
  const char* path = nullptr;
  GVariantIter* names = nullptr;
  g_variant_get(arguments, "(&oas)", &path, &names);
  bool adapterGone = false;
  const char* name = nullptr;
  while (g_variant_iter_next(names, "&s", &name)) {
    adapterGone = adapterGone || (adapter_ == path && std::string_view(name) == adapterInterface);
  }
  g_variant_iter_free(names);
  if (adapterGone) begin();
}

void BluezScanner::propertiesChanged(const std::string& path, GVariant* arguments) {
  const char* interface = nullptr;
  g_variant_get_child(arguments, 0, "&s", &interface);
  const VariantPtr properties(g_variant_get_child_value(arguments, 1));
  if (std::string_view(interface) == deviceInterface) return sight(properties.get());
  gboolean powered = FALSE;
  if (path != adapter_ || !g_variant_lookup(properties.get(), "Powered", "b", &powered)) return;
  scanning_ = false;
  if (powered) {
    begin();
  } else {
    complain("the Bluetooth adapter is switched off");
  }
}

void BluezScanner::serviceChanged(GVariant* arguments) {
  const char* owner = nullptr;
  g_variant_get_child(arguments, 2, "&s", &owner);
  scanning_ = false;
  if (*owner) begin();
}

void BluezScanner::sight(GVariant* deviceProperties) {
  if (const auto beacon = beaconOf(deviceProperties)) seen_(*beacon);
}

}  // namespace VorselKelp::freedesktop
