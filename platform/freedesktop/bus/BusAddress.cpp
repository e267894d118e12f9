#include "bus/BusAddress.h"

#include "glib/Pointers.h"

namespace VorselKelp::freedesktop {
namespace {

Result<std::string> sessionAddress() {
  const auto* folder = g_getenv("XDG_RUNTIME_DIR");
  const auto socket = folder ? std::string(folder) + "/bus" : std::string();
  if (socket.empty() || !g_file_test(socket.c_str(), G_FILE_TEST_EXISTS))
    return Error{"there is no session bus: DBUS_SESSION_BUS_ADDRESS is not set"};
  return "unix:path=" + std::string(TextPtr(g_dbus_address_escape_value(socket.c_str())).get());
}

}  // namespace

Result<std::string> busAddress(BusKind kind) {
  const bool session = kind == BusKind::session;
  const auto* address = g_getenv(session ? "DBUS_SESSION_BUS_ADDRESS" : "DBUS_SYSTEM_BUS_ADDRESS");
  if (address && *address) return std::string(address);
  return session ? sessionAddress() : Result<std::string>("unix:path=/run/dbus/system_bus_socket");
}

}  // namespace VorselKelp::freedesktop
