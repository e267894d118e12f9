#include "freedesktop/BusTest.h"

#include <stdexcept>
#include <utility>

#include "bus/Connection.h"

namespace VorselKelp::freedesktop {
namespace {

constexpr const char* daemonName = "org.freedesktop.DBus";

ObjectPtr<GDBusConnection> connect(const std::string& address) {
  GError* error = nullptr;
  auto* connection = g_dbus_connection_new_for_address_sync(
      address.c_str(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, &error);
  if (error) throw std::runtime_error(ErrorPtr(error)->message);
  return ObjectPtr<GDBusConnection>(connection);
}

VariantPtr askDaemon(GDBusConnection* connection, const char* method, GVariant* arguments) {
  GError* error = nullptr;
  VariantPtr reply(g_dbus_connection_call_sync(connection, daemonName, "/org/freedesktop/DBus", daemonName,
                                               method, arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
                                               nullptr, &error));
  if (error) throw std::runtime_error(ErrorPtr(error)->message);
  return reply;
}

void methodCalled(GDBusConnection*, const gchar*, const gchar* path, const gchar*, const gchar* method,
                  GVariant* arguments, GDBusMethodInvocation* invocation, gpointer methods) {
  (*static_cast<BusService::Methods*>(methods))(path, method, arguments, invocation);
}

}  // namespace

BusService::BusService(const std::string& address, std::string name)
    : name_(std::move(name)), connection_(connect(address)) {}

BusService::~BusService() {
  // A call that has come and waits for its turn would still be handed on.
  for (const auto object : objects_) g_dbus_connection_unregister_object(connection_.get(), object);
  g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
}

void BusService::serve(const std::string& path, const char* interfaces, Methods methods) {
  static constexpr GDBusInterfaceVTable table{methodCalled, nullptr, nullptr, {}};
  GError* error = nullptr;
  GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(interfaces, &error);
  if (error) throw std::runtime_error(ErrorPtr(error)->message);
  for (auto** each = node->interfaces; *each; ++each) {
    objects_.push_back(g_dbus_connection_register_object(
        connection_.get(), path.c_str(), *each, &table, new Methods(methods),
        [](gpointer data) { delete static_cast<Methods*>(data); }, nullptr));
  }
  g_dbus_node_info_unref(node);
}

void BusService::own() {
  constexpr std::uint32_t doNotQueue = 4;
  askDaemon(connection_.get(), "RequestName", g_variant_new("(su)", name_.c_str(), doNotQueue));
}

void BusService::emit(const std::string& path, const char* interface, const char* signal,
                      GVariant* arguments) {
  g_dbus_connection_emit_signal(connection_.get(), nullptr, path.c_str(), interface, signal, arguments,
                                nullptr);
}

void BusService::catchUp() {
  // What came on the connection before the answer is called before it.
  auto* answer =
      g_dbus_connection_call_sync(connection_.get(), daemonName, "/org/freedesktop/DBus", daemonName, "GetId",
                                  nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
  if (answer) g_variant_unref(answer);
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
}

BusTest::BusTest(const std::string& services) : daemon(g_test_dbus_new(G_TEST_DBUS_NONE)) {
  if (!services.empty()) g_test_dbus_add_service_dir(daemon.get(), services.c_str());
  g_test_dbus_up(daemon.get());
  address = g_test_dbus_get_bus_address(daemon.get());
}

BusTest::~BusTest() {
  g_test_dbus_stop(daemon.get());
}

void BusTest::waitUntil(const std::function<bool()>& done, std::source_location where) {
  constexpr unsigned patience = 20;  // seconds
  bool late = false;
  const auto timer = g_timeout_add_seconds(
      patience,
      [](gpointer flag) -> gboolean {
        *static_cast<bool*>(flag) = true;
        return G_SOURCE_REMOVE;
      },
      &late);
  queue->runUntilIdle();
  while (!late && !done()) {
    g_main_context_iteration(nullptr, TRUE);
    queue->runUntilIdle();
  }
  if (!late) g_source_remove(timer);
  // Ends the test: what follows counts on it.
  if (late)
    throw std::runtime_error("what was waited for in line " + std::to_string(where.line()) +
                             " did not happen");
}

void BusTest::advance(int seconds) {
  queue->runUntilIdle();
  for (int i = 0; i < seconds; ++i) {
    clock->advance(1);
    queue->runUntilIdle();
  }
}

void BusTest::waitForName(const std::string& name, bool owned) {
  // It has nothing to do but to wake the waiting when a name changes hands.
  const auto watcher = std::make_shared<Connection>(BusKind::session, address, queue);
  watcher->listen({daemonName, daemonName, "NameOwnerChanged", nullptr, nullptr, "(sss)"},
                  [](const std::string&, GVariant*) {});
  watcher->call({daemonName, "/", "org.freedesktop.DBus.Peer", "Ping"}, nullptr,
                [](const Result<VariantPtr>&) {});
  const auto connection = connect(address);
  waitUntil([&] {
    gboolean found = FALSE;
    g_variant_get(askDaemon(connection.get(), "NameHasOwner", g_variant_new("(s)", name.c_str())).get(),
                  "(b)", &found);
    return (found != FALSE) == owned;
  });
}

}  // namespace VorselKelp::freedesktop
