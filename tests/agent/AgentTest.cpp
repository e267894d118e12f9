#include "agent/AgentTest.h"

#include <signal.h>
#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "VorselKelpPosix/Services.h"
#include "VorselKelpPosix/Statement.h"
#include "VorselKelpWebPush/Message.h"

namespace VorselKelp::agent {
namespace {

constexpr const char* application = "com.example.app";
constexpr const char* agentName = "com.example.app.Push";
constexpr const char* daemonName = "org.freedesktop.DBus";

VariantPtr callOnce(const std::string& address, const char* name, const char* path, const char* interface,
                    const char* method, GVariant* arguments) {
  // A connection of its own: the waiting must not hold up what the test serves meanwhile.
  VariantPtr answer;
  auto bus = Bus::connect(address);
  bool done = false;
  (*bus)->call(name, path, interface, method, arguments, "*", [&](Result<VariantPtr> reply) {
    if (reply) answer = *std::move(reply);
    done = true;
  });
  while (!done) g_main_context_iteration(nullptr, TRUE);
  return answer;
}

}  // namespace

FakeApplication::FakeApplication(const std::string& address) : service_(address, application) {
  service_.serve(
      "/com/example/app",
      R"(<node><interface name='org.freedesktop.Application'><method name='ActivateAction'>
        <arg type='s' direction='in'/><arg type='av' direction='in'/><arg type='a{sv}' direction='in'/>
      </method></interface></node>)",
      [this](const std::string&, const std::string&, GVariant* arguments, GDBusMethodInvocation* invocation) {
        const char* action = nullptr;
        GVariant* parameters = nullptr;
        GVariant* data = nullptr;
        g_variant_get(arguments, "(&s@av@a{sv})", &action, &parameters, &data);
        const VariantPtr held(parameters);
        const VariantPtr heldData(data);
        const VariantPtr boxed(g_variant_get_child_value(parameters, 0));
        const VariantPtr target(g_variant_get_variant(boxed.get()));
        Activation activation{action, freedesktop::TextPtr(g_variant_print(target.get(), FALSE)).get(), {}};
        for (const char* key : {"desktop-startup-id", "activation-token"}) {
          const VariantPtr token(g_variant_lookup_value(data, key, G_VARIANT_TYPE_STRING));
          if (token) activation.activationToken += g_variant_get_string(token.get(), nullptr);
        }
        activations.push_back(activation);
        if (refuses)
          return g_dbus_method_invocation_return_dbus_error(invocation, "a.b.NoDisplay", "no display");
        g_dbus_method_invocation_return_value(invocation, nullptr);
      });
  service_.own();
}

AgentFolder::AgentFolder() {
  std::string name = std::filesystem::temp_directory_path() / "vorsel-agent-XXXXXX";
  path = ::mkdtemp(name.data());
  for (const auto& [variable, folder] :
       {std::pair{"XDG_DATA_HOME", "/data"}, {"XDG_CONFIG_HOME", "/config"}, {"XDG_CACHE_HOME", "/cache"}})
    ::setenv(variable, (path + folder).c_str(), 1);
  describe({});
  std::filesystem::create_directory(path + "/services");
  std::ofstream(path + "/services/agent.service")
      << "[D-BUS Service]\nName=" << agentName << "\nExec=/bin/sh " << path << "/start\n";
  start({}, "0.2");
}

AgentFolder::~AgentFolder() {
  // An agent that has given its name back may still be closing its files.
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

void AgentFolder::start(const std::string& under, const std::string& idle) const {
  const auto agent =
      program + " --description " + path + "/app.json --idle " + idle + " 2>> " + path + "/lines\n";
  std::ofstream script(path + "/start");
  if (!under.empty())
    script << "mv " << path << "/disturbance " << path << "/disturbing 2> /dev/null && exec " << under
           << " $(cat " << path << "/disturbing) -- " << agent;
  script << "exec " << agent;
}

void AgentFolder::describe(const std::string& more) const {
  std::ofstream(path + "/app.json") << R"({"bundleIdentifier":")" << application
                                    << R"(","name":"App","appGroupId":"group.app")" << more << "}";
}

AgentTest::AgentTest() : BusTest(path + "/services") {
  bus_ = *Bus::connect(address);
  const auto description = *system::parseDescription(R"({"bundleIdentifier":"com.example.app"})");
  store = std::make_unique<system::NotificationStore>(system::foldersOf(description).notifications,
                                                      application, posix::makeClock());
  store->setAuthorization(platform::AuthorizationStatus::authorized);
  // What is waited for may be seen in files and answers alone.
  constexpr unsigned often = 20;  // milliseconds
  pulse_ = g_timeout_add(
      often, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
}

AgentTest::~AgentTest() {
  killAgent();
  g_source_remove(pulse_);
}

distributor::Distributor& AgentTest::startDistributor(const std::string& name, Habits habits) {
  if (habits.endpointsBefore.empty()) habits.endpointsBefore = "https://push.example/";
  auto bus = *Bus::connect(address);
  auto made = std::make_unique<distributor::Distributor>(*bus, name, habits);
  bool owned = false;
  made->begin([&](bool ours) { owned = ours; });
  waitUntil([&] { return owned; });
  distributors_.emplace_back(std::move(bus), std::move(made));
  return *distributors_.back().second;
}

VariantPtr AgentTest::callAgent(const char* interface, const char* method, GVariant* arguments) {
  return callOnce(address, agentName, "/org/vorselkelp/PushAgent", interface, method, arguments);
}

std::string AgentTest::ask(const char* method) {
  const bool plain = std::string_view(method) == "Look";
  const auto answer =
      callAgent("org.vorselkelp.PushAgent1", method, plain ? nullptr : g_variant_new("(a{sv})", nullptr));
  return answer ? freedesktop::TextPtr(g_variant_print(answer.get(), FALSE)).get() : "";
}

void AgentTest::takeAway(const char* identifier) {
  callAgent("org.vorselkelp.PushAgent1", "TakeAway", g_variant_new_parsed("([%s],)", identifier));
}

std::string AgentTest::condition(const char* member) {
  const auto answer = callAgent("org.freedesktop.DBus.Properties", "Get",
                                g_variant_new("(ss)", "org.vorselkelp.PushAgent1", "Condition"));
  if (!answer) return "";
  const VariantPtr boxed(g_variant_get_child_value(answer.get(), 0));
  const VariantPtr members(g_variant_get_variant(boxed.get()));
  const VariantPtr value(g_variant_lookup_value(members.get(), member, G_VARIANT_TYPE_STRING));
  return value ? g_variant_get_string(value.get(), nullptr) : "";
}

webpush::Subscription AgentTest::subscribe() {
  ask("Register");
  waitUntil([&] { return condition("stage") == "registered"; });
  const auto parsed = webpush::parseSubscription(condition("subscription"));
  subscription = parsed ? *parsed : webpush::Subscription{};
  return *subscription;
}

void AgentTest::sendBytes(distributor::Distributor& distributor, const std::string& bytes,
                          const std::string& id) {
  ASSERT_FALSE(distributor.registrations().empty());
  const auto sent = distributor.send(distributor.registrations().begin()->first, bytes, id,
                                     [this](const Status& status) { ++(status ? acknowledged : refused); });
  EXPECT_TRUE(sent);
}

void AgentTest::send(distributor::Distributor& distributor, const std::string& text, const std::string& id) {
  sendBytes(distributor, *webpush::encrypt(text, *subscription), id);
}

pid_t AgentTest::process() const {
  const auto answer = callOnce(address, daemonName, "/org/freedesktop/DBus", daemonName,
                               "GetConnectionUnixProcessID", g_variant_new("(s)", agentName));
  guint32 process = 0;
  if (answer) g_variant_get(answer.get(), "(u)", &process);
  return static_cast<pid_t>(process);
}

void AgentTest::waitUntilRunning(bool wanted) {
  waitUntil([&] { return running() == wanted; });
}

std::int64_t AgentTest::rowsOf(const std::string& table) {
  const auto description = *system::parseDescription(R"({"bundleIdentifier":"com.example.app"})");
  sqlite3* database = nullptr;
  ::sqlite3_open((system::foldersOf(description).data + "/push/agent.sqlite").c_str(), &database);
  std::int64_t count = -1;
  {
    posix::Connection connection{database, std::nullopt};
    posix::Statement row(connection, ("SELECT count(*) FROM " + table).c_str());
    if (row.step()) count = row.integer(0);
  }
  ::sqlite3_close(database);
  return count;
}

void AgentTest::killAgent() {
  const auto agent = process();
  if (agent == 0) return;
  ::kill(agent, SIGKILL);
  waitUntilRunning(false);
}

std::string AgentTest::lines() const {
  std::ostringstream text;
  text << std::ifstream(path + "/lines").rdbuf();
  return text.str();
}

std::string payload(const std::string& title) {
  return R"({"aps":{"alert":{"title":")" + title + R"(","body":"text"}}})";
}

}  // namespace VorselKelp::agent
