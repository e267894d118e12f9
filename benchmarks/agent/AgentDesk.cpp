#include "agent/AgentDesk.h"

#include <signal.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "VorselKelpPosix/Services.h"
#include "VorselKelpSystem/Description.h"
#include "VorselKelpSystem/NotificationStore.h"
#include "VorselKelpWebPush/Message.h"
#include "support/BareStore.h"

namespace VorselKelp::benchmarks {
namespace {

constexpr const char* application = "com.example.news";
constexpr const char* serverName = "org.freedesktop.Notifications";
constexpr const char* serverPath = "/org/freedesktop/Notifications";
constexpr const char* daemonName = "org.freedesktop.DBus";
constexpr const char* connectorPath = "/org/unifiedpush/Connector";

constexpr const char* serverInterface = R"(<node><interface name="org.freedesktop.Notifications">
  <method name="GetCapabilities"><arg direction="out" type="as"/></method>
  <method name="CloseNotification"><arg direction="in" type="u"/></method>
  <method name="Notify">
    <arg direction="in" type="s"/><arg direction="in" type="u"/><arg direction="in" type="s"/>
    <arg direction="in" type="s"/><arg direction="in" type="s"/><arg direction="in" type="as"/>
    <arg direction="in" type="a{sv}"/><arg direction="in" type="i"/><arg direction="out" type="u"/>
  </method>
</interface></node>)";

double now() {
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

void writeService(const std::string& folder, const std::string& name, const std::string& command) {
  std::ofstream(folder + "/services/" + name + ".service")
      << "[D-BUS Service]\nName=" << name << "\nExec=" << command << "\n";
}

GVariant* messageOf(const AgentDesk::Receiver& receiver) {
  const auto bytes = *webpush::encrypt(quietPush(), receiver.subscription);
  GVariantBuilder members;
  g_variant_builder_init(&members, G_VARIANT_TYPE("a{sv}"));
  g_variant_builder_add(&members, "{sv}", "token", g_variant_new_string(receiver.token.c_str()));
  g_variant_builder_add(&members, "{sv}", "message",
                        g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, bytes.data(), bytes.size(), 1));
  return g_variant_new("(a{sv})", &members);
}

}  // namespace

AgentDesk::AgentDesk(Manner manner) : daemon_(g_test_dbus_new(G_TEST_DBUS_NONE)) {
  ::setenv("XDG_DATA_HOME", (folder_.path + "/data").c_str(), 1);
  ::setenv("XDG_CACHE_HOME", (folder_.path + "/cache").c_str(), 1);
  ::setenv("XDG_CONFIG_HOME", (folder_.path + "/config").c_str(), 1);
  std::ofstream(folder_.path + "/app.json") << R"({"bundleIdentifier":")" << application
                                            << R"(","apiKey":"k","appGroupId":"group.com.example.news"})";
  std::filesystem::create_directory(folder_.path + "/services");
  agent_.name = std::string(application) + ".Push";
  bare_.name = "com.example.bare.Push";
  writeServices(manner);
  g_test_dbus_add_service_dir(daemon_.get(), (folder_.path + "/services").c_str());
  g_test_dbus_up(daemon_.get());
  constexpr unsigned often = 1;  // milliseconds: for what is waited for without an event
  pulse_ = g_timeout_add(
      often, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
  serve();
  subscribe();
}

AgentDesk::~AgentDesk() {
  // What was shown last has yet to expire.
  constexpr double patience = 50e3;
  waitUntil([end = now() + patience] { return now() > end; });
  for (const auto* receiver : {&agent_, &bare_}) kill(*receiver);
  g_source_remove(pulse_);
  distributor_ = nullptr;
  desk_ = nullptr;
  bus_ = nullptr;
  g_test_dbus_stop(daemon_.get());
}

std::vector<std::string> AgentDesk::bareExtension(int number) const {
  return {BARE_EXECUTABLE, folder_.path + "/payload.json", folder_.path + "/bare.sqlite",
          "n-" + std::to_string(number)};
}

void AgentDesk::writeServices(Manner manner) {
  writeService(folder_.path, agent_.name,
               std::string(AGENT_EXECUTABLE) + " --description " + folder_.path + "/app.json --idle " +
                   (manner == Manner::leave ? "0" : "600"));
  const char* bare = manner == Manner::leave ? " --once" : manner == Manner::keep ? " --spool-only" : "";
  writeService(folder_.path, bare_.name,
               std::string(BARE_AGENT_EXECUTABLE) + " " + folder_.path + " " + bare_.name + bare);
}

/// Once the agent has heard the number.
void AgentDesk::expireSoon(std::uint32_t number) {
  constexpr unsigned soon = 5;  // milliseconds
  g_timeout_add_full(
      G_PRIORITY_DEFAULT, soon,
      [](gpointer notification) -> gboolean {
        constexpr unsigned expired = 1;
        const auto& [desk, shown] = *static_cast<std::pair<AgentDesk*, std::uint32_t>*>(notification);
        desk->bus_->emitSignal(serverPath, serverName, "NotificationClosed",
                               g_variant_new("(uu)", shown, expired));
        return G_SOURCE_REMOVE;
      },
      new std::pair<AgentDesk*, std::uint32_t>(this, number),
      [](gpointer notification) { delete static_cast<std::pair<AgentDesk*, std::uint32_t>*>(notification); });
}

void AgentDesk::serve() {
  bus_ = *agent::Bus::connect({});
  const auto answer = [this](agent::Call call) {
    if (call.method == "GetCapabilities") {
      const char* none[] = {"body", nullptr};
      return call.answer(freedesktop::hold(g_variant_new("(^as)", none)));
    }
    if (call.method == "CloseNotification") return call.answer(freedesktop::hold(g_variant_new("()")));
    ++shown_;
    call.answer(freedesktop::hold(g_variant_new("(u)", ++number_)));
    expireSoon(number_);
  };
  if (!bus_->serve(serverPath, serverInterface, answer)) std::abort();
  bool owned = false;
  bus_->requestName(serverName, [&](const Result<bool>& ours) { owned = ours && *ours; });
  waitUntil([&] { return owned; });
}

void AgentDesk::subscribe() {
  const auto keys = *webpush::makeReceiverKeys();
  std::ofstream(folder_.path + "/keys", std::ios::binary) << keys.privateKey << keys.publicKey << keys.auth;
  std::ofstream(folder_.path + "/payload.json") << quietPush();
  bare_.token = "bare";
  bare_.subscription = {"https://push.example/bare", keys.auth, keys.publicKey};
  const BareStore made(folder_.path + "/bare.sqlite", 2048);

  const auto description = *system::parseDescription(R"({"bundleIdentifier":"com.example.news"})");
  system::NotificationStore(system::foldersOf(description).notifications, application, posix::makeClock())
      .setAuthorization(platform::AuthorizationStatus::authorized);
  desk_ = *agent::Bus::connect({});
  distributor::Habits habits;
  habits.endpointsBefore = "https://push.example/";
  distributor_ = std::make_unique<distributor::Distributor>(*desk_, "desk", habits);
  bool owned = false;
  distributor_->begin([&](bool ours) { owned = ours; });
  waitUntil([&] { return owned; });
  std::string subscription;
  ask(agent_.name.c_str(), "/org/vorselkelp/PushAgent", "org.vorselkelp.PushAgent1", "Register",
      g_variant_new("(a{sv})", nullptr));
  waitUntil([&] {
    const auto answer =
        ask(agent_.name.c_str(), "/org/vorselkelp/PushAgent", "org.freedesktop.DBus.Properties", "Get",
            g_variant_new("(ss)", "org.vorselkelp.PushAgent1", "Condition"));
    if (!answer) return false;
    const agent::VariantPtr boxed(g_variant_get_child_value(answer.get(), 0));
    const agent::VariantPtr members(g_variant_get_variant(boxed.get()));
    const char* text = nullptr;
    if (!g_variant_lookup(members.get(), "subscription", "&s", &text)) return false;
    agent_.subscription = *webpush::parseSubscription(text);
    return true;
  });
  agent_.token = distributor_->registrations().begin()->second.token;
}

agent::VariantPtr AgentDesk::ask(const char* name, const char* path, const char* interface,
                                 const char* method, GVariant* arguments) {
  agent::VariantPtr answer;
  bool done = false;
  desk_->call(name, path, interface, method, arguments, "*", [&](Result<agent::VariantPtr> reply) {
    if (reply) answer = *std::move(reply);
    done = true;
  });
  while (!done) g_main_context_iteration(nullptr, TRUE);
  return answer;
}

void AgentDesk::waitUntil(const std::function<bool()>& done) {
  constexpr double patience = 60e6;
  const double end = now() + patience;
  while (!done()) {
    if (now() > end) {
      std::fputs("the agent's benchmark waits in vain\n", stderr);
      std::abort();  // a figure of something that does not work is none
    }
    g_main_context_iteration(nullptr, TRUE);
  }
}

void AgentDesk::send(const Receiver& receiver) {
  desk_->call(receiver.name.c_str(), connectorPath, "org.unifiedpush.Connector2", "Message",
              messageOf(receiver), "(a{sv})", [this](const Result<agent::VariantPtr>& reply) {
                if (!reply) std::fprintf(stderr, "%s\n", reply.error().description.c_str());
                ++answered_;
              });
}

double AgentDesk::push(const Receiver& receiver) {
  const int before = shown_;
  const double start = now();
  send(receiver);
  waitUntil([&] { return shown_ > before; });
  return now() - start;
}

double AgentDesk::burst(const Receiver& receiver, int count, int shown) {
  const int before = shown_;
  const int answeredBefore = answered_;
  const double start = now();
  // A bus lets a caller wait for so many answers at once.
  constexpr int atOnce = 100;
  for (int i = 0; i < count; ++i) {
    waitUntil([&] { return i - (answered_ - answeredBefore) < atOnce; });
    send(receiver);
  }
  waitUntil([&] { return answered_ == answeredBefore + count && shown_ >= before + shown; });
  const double seconds = (now() - start) / 1e6;
  if (shown_ != before + shown) std::abort();  // one was shown twice
  return seconds;
}

int AgentDesk::processOf(const Receiver& receiver) {
  const auto answer = ask(daemonName, "/org/freedesktop/DBus", daemonName, "GetConnectionUnixProcessID",
                          g_variant_new("(s)", receiver.name.c_str()));
  guint32 process = 0;
  if (answer) g_variant_get(answer.get(), "(u)", &process);
  return static_cast<int>(process);
}

void AgentDesk::waitUntilGone(const Receiver& receiver) {
  const int process = processOf(receiver);
  waitUntil([&] { return process == 0 || !std::filesystem::exists("/proc/" + std::to_string(process)); });
}

void AgentDesk::kill(const Receiver& receiver) {
  if (const int process = processOf(receiver); process != 0) ::kill(process, SIGKILL);
  waitUntilGone(receiver);
}

long AgentDesk::kilobytes(const Receiver& receiver, const char* file, const std::string& entry) {
  std::ifstream lines("/proc/" + std::to_string(processOf(receiver)) + "/" + file);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(entry + ":")) return std::strtol(line.c_str() + entry.size() + 1, nullptr, 10);
  }
  std::abort();
}

}  // namespace VorselKelp::benchmarks
