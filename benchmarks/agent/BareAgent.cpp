// The least that a push agent can do, on GDBus alone: own a name, write each message to a file, sync and
// rename it, acknowledge it, decrypt it, run the bare extension, call Notify, remove the file. It shows one
// message after the other.
//   bare_agent FOLDER NAME [--spool-only] [--once]
// FOLDER has "keys" (32, 65 and 16 bytes) and "bare.sqlite".

#include <fcntl.h>
#include <gio/gio.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

#include "VorselKelpWebPush/Message.h"

extern char** environ;

namespace {

using namespace VorselKelp;

struct BareAgent {
  std::string folder;
  bool spoolOnly = false;
  bool once = false;
  webpush::ReceiverKeys keys;
  GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
  int count = 0;
};

constexpr const char* connector = R"(<node><interface name="org.unifiedpush.Connector2">
  <method name="Message"><arg type="a{sv}" direction="in"/><arg type="a{sv}" direction="out"/></method>
</interface></node>)";

std::string readAll(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

void writeSynced(const std::string& path, const std::string& bytes, bool sync) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (write(file, bytes.data(), bytes.size()) < 0 || (sync && fsync(file) < 0)) abort();
  close(file);
}

std::string spool(const BareAgent& agent, const std::string& bytes) {
  const auto path = agent.folder + "/spool-" + std::to_string(agent.count);
  writeSynced(path + ".new", bytes, true);
  if (rename((path + ".new").c_str(), path.c_str()) < 0) abort();
  const int folder = open(agent.folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  fsync(folder);
  close(folder);
  return path;
}

void runExtension(const BareAgent& agent, const std::string& payload) {
  const auto file = agent.folder + "/payload.json";
  writeSynced(file, payload, false);
  const auto database = agent.folder + "/bare.sqlite";
  const auto id = "n-" + std::to_string(agent.count);
  const char* arguments[] = {BARE_EXECUTABLE, file.c_str(), database.c_str(), id.c_str(), nullptr};
  pid_t process = 0;
  if (posix_spawn(&process, BARE_EXECUTABLE, nullptr, nullptr, const_cast<char**>(arguments), environ) != 0)
    abort();
  int status = 0;
  waitpid(process, &status, 0);
  if (status != 0) abort();
}

void notify(GDBusConnection* bus) {
  GVariantBuilder hints;
  g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
  g_variant_unref(g_dbus_connection_call_sync(
      bus, "org.freedesktop.Notifications", "/org/freedesktop/Notifications", "org.freedesktop.Notifications",
      "Notify", g_variant_new("(susssasa{sv}i)", "App", 0, "", "Storm warning", "text", nullptr, &hints, -1),
      nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
}

void called(GDBusConnection* bus, const gchar*, const gchar*, const gchar*, const gchar*, GVariant* arguments,
            GDBusMethodInvocation* invocation, gpointer self) {
  auto& agent = *static_cast<BareAgent*>(self);
  ++agent.count;
  GVariant* members = g_variant_get_child_value(arguments, 0);
  GVariant* message = g_variant_lookup_value(members, "message", G_VARIANT_TYPE_BYTESTRING);
  gsize size = 0;
  const auto* bytes = static_cast<const char*>(g_variant_get_fixed_array(message, &size, 1));
  const std::string encrypted(bytes, size);
  g_variant_unref(message);
  g_variant_unref(members);
  const auto path = spool(agent, encrypted);
  g_dbus_method_invocation_return_value(invocation, g_variant_new("(a{sv})", nullptr));
  if (agent.spoolOnly) return;
  const auto payload = webpush::decrypt(encrypted, agent.keys);
  if (!payload) abort();
  runExtension(agent, *payload);
  notify(bus);
  unlink(path.c_str());
  if (agent.once) g_main_loop_quit(agent.loop);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  BareAgent agent;
  agent.folder = argv[1];
  for (int i = 3; i < argc; ++i) {
    agent.spoolOnly = agent.spoolOnly || std::strcmp(argv[i], "--spool-only") == 0;
    agent.once = agent.once || std::strcmp(argv[i], "--once") == 0;
  }
  const auto keys = readAll(agent.folder + "/keys");
  agent.keys = {keys.substr(0, 32), keys.substr(32, 65), keys.substr(97, 16)};
  auto* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
  if (!bus) return 1;
  static const GDBusInterfaceVTable table{called, nullptr, nullptr, {}};
  auto* node = g_dbus_node_info_new_for_xml(connector, nullptr);
  g_dbus_connection_register_object(bus, "/org/unifiedpush/Connector", node->interfaces[0], &table, &agent,
                                    nullptr, nullptr);
  g_bus_own_name_on_connection(bus, argv[2], G_BUS_NAME_OWNER_FLAGS_DO_NOT_QUEUE, nullptr, nullptr, nullptr,
                               nullptr);
  g_main_loop_run(agent.loop);
  g_dbus_connection_flush_sync(bus, nullptr, nullptr);
  return 0;
}
