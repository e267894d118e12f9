#pragma once

#include <gio/gio.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "glib/Pointers.h"

namespace VorselKelp::testing_support {

/// What a reader of the screen is told, over the accessibility bus of the session.
class ScreenReader {
 public:
  ScreenReader() {
    const freedesktop::ObjectPtr<GDBusConnection> session(
        g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    const auto address =
        call(session.get(), "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", nullptr);
    if (!address) return;
    const char* text = nullptr;
    g_variant_get(address.get(), "(&s)", &text);
    bus_.reset(g_dbus_connection_new_for_address_sync(
        text,
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr));
  }

  /// "ROLE NAME" of everything that the desktop's applications show.
  [[nodiscard]] std::vector<std::string> everything() const {
    std::vector<std::string> found;
    if (bus_) walk("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root", 0, found);
    return found;
  }

 private:
  static constexpr const char* accessible = "org.a11y.atspi.Accessible";
  static constexpr int deepest = 20;

  static freedesktop::VariantPtr call(GDBusConnection* bus, const std::string& name, const std::string& path,
                                      const char* interface, const char* method, GVariant* arguments) {
    return freedesktop::VariantPtr(
        g_dbus_connection_call_sync(bus, name.c_str(), path.c_str(), interface, method, arguments, nullptr,
                                    G_DBUS_CALL_FLAGS_NONE, 5000, nullptr, nullptr));
  }

  void walk(const std::string& name, const std::string& path, int depth,
            std::vector<std::string>& found) const {
    const auto role = call(bus_.get(), name, path, accessible, "GetRoleName", nullptr);
    const auto title = call(bus_.get(), name, path, "org.freedesktop.DBus.Properties", "Get",
                            g_variant_new("(ss)", accessible, "Name"));
    if (!role || !title || depth > deepest) return;
    const char* roleText = nullptr;
    g_variant_get(role.get(), "(&s)", &roleText);
    GVariant* boxed = nullptr;
    g_variant_get(title.get(), "(v)", &boxed);
    const freedesktop::VariantPtr text(boxed);
    found.push_back(std::string(roleText) + " " + g_variant_get_string(text.get(), nullptr));
    const auto children = call(bus_.get(), name, path, accessible, "GetChildren", nullptr);
    if (!children) return;
    GVariantIter* each = nullptr;
    g_variant_get(children.get(), "(a(so))", &each);
    const char* childName = nullptr;
    const char* childPath = nullptr;
    while (g_variant_iter_next(each, "(&s&o)", &childName, &childPath))
      walk(childName, childPath, depth + 1, found);
    g_variant_iter_free(each);
  }

  freedesktop::ObjectPtr<GDBusConnection> bus_;
};

}  // namespace VorselKelp::testing_support
