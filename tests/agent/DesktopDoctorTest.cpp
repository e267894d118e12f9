#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>

#include "agent/AgentTest.h"
#include "freedesktop/PortalServer.h"
#include "posix/support/Variable.h"
#include "state/State.h"
#include "tools/ToolFixture.h"

namespace VorselKelp::agent {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing_support::Variable;
using tool_tests::at;
using tool_tests::ToolRun;

constexpr const char* applicationFile = "data/dbus-1/services/com.example.app.service";
constexpr const char* agentFile = "data/dbus-1/services/com.example.app.Push.service";
constexpr const char* entryFile = "data/applications/com.example.app.desktop";

/// An application as it is installed on a desktop that lacks nothing.
class DesktopDoctorTest : public AgentTest {
 protected:
  DesktopDoctorTest() {
    const auto started = JSONAny::decode(collection.readLine());
    url = started ? at(*started, "url") : "";
    for (const char* name : {"collection", "tag", "events", "adFeed", "script"})
      servers += std::string(servers.empty() ? "\"" : ",\"") + name + "\":\"" + url + '"';
    install();
    start({}, "60");  // an agent that leaves between two looks would begin anew
    write("services/app.service", "[D-BUS Service]\nName=com.example.app\nExec=/bin/false\n");
    lookForFiles();
    subscribe();
  }

  void write(const std::string& name, const std::string& text) const {
    const std::filesystem::path place = path + "/" + name;
    std::filesystem::create_directories(place.parent_path());
    std::ofstream(place) << text;
  }
  void install() const {
    write(applicationFile, "[D-BUS Service]\nName=com.example.app\nExec=/bin/false --service\n");
    write(agentFile, "[D-BUS Service]\nName=com.example.app.Push\nExec=/bin/sh \"" + path +
                         "/start\" --description " + path + "/app.json\n");
    write(entryFile, "[Desktop Entry]\nDBusActivatable=true\n");
    describeWith({});
  }
  void describeWith(const std::string& more) const {
    describe(R"(,"properties":{"VorselKellpApiKey":"k-1"},"endpoints":{)" + servers + "}" + more);
  }
  /// Has the bus read its folder of service files again.
  void lookForFiles() {
    bool done = false;
    (*bus)->call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "StartServiceByName",
                 g_variant_new("(su)", "com.example.none", 0U), "*",
                 [&](const Result<VariantPtr>&) { done = true; });
    waitUntil([&] { return done; });
  }

  /// "state check: what" of each finding.
  std::vector<std::string> examine(const std::string& identifier = "com.example.app") {
    ToolRun run({BRELLIXCTL, "doctor", "--application", identifier, "--json"}, file("errors"));
    auto output = std::async(std::launch::async, [&] { return run.readAll(); });
    waitUntil([&] { return output.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
    const auto json = JSONAny::decode(output.get());
    const auto* findings = json ? json->find("findings") : nullptr;
    std::vector<std::string> lines;
    bool faults = false;
    for (const auto& finding : findings ? *findings->as<JSONAny::List>() : JSONAny::List()) {
      const auto state = at(finding, "state");
      lines.push_back(state + " " + at(finding, "check") + ": " + at(finding, "what"));
      faults = faults || state == "fault";
      EXPECT_EQ(at(finding, "mend").empty(), state == "ok") << lines.back();
    }
    EXPECT_EQ(run.wait(), faults ? 1 : 0);
    return lines;
  }
  /// What of it is not fine.
  std::vector<std::string> ailments(const std::string& identifier = "com.example.app") {
    auto lines = examine(identifier);
    EXPECT_FALSE(lines.empty());
    std::erase_if(lines, [](const auto& line) { return line.starts_with("ok "); });
    return lines;
  }
  /// As `examine` tells it of one check.
  std::string saidOf(const std::string& check) {
    std::string said;
    for (const auto& line : examine()) {
      if (line.find(" " + check + ": ") != std::string::npos) said += line;
    }
    return said;
  }

  const Variable systemData{"XDG_DATA_DIRS", (path + "/system").c_str()};
  ToolRun collection{{BRELLIXCTL, "serve", "--port", "0", "--json"}, file("server-errors")};
  std::string url;
  std::string servers;
  Result<std::unique_ptr<Bus>> bus = Bus::connect(address);
  std::optional<freedesktop::NotificationServer> desktop{address};
  std::optional<freedesktop::PortalServer> portal{address};
  distributor::Distributor& desk = startDistributor("desk");
};

TEST_F(DesktopDoctorTest, FindsNothingWrongWithAWholeDesktop) {
  const auto endpoint = [&](const std::string& name) { return "ok endpoints: " + name + ": " + url; };
  EXPECT_THAT(
      examine(),
      ElementsAre(
          "ok bus: the session's bus answers", "ok files: " + file(applicationFile) + " starts /bin/false",
          "ok files: " + file(agentFile) + " starts /bin/sh",
          "ok files: " + file(entryFile) + " is its desktop entry",
          "ok files: " + file("app.json") + " describes it", "ok manifest: describes com.example.app 1.0",
          "ok group: group.app is shared by application and extensions",
          "ok folders: " + file("data/com.example.app/vorselkelp") + " can be written, and so can the others",
          "ok permission: the user allows notifications", "ok distributor: desk has the agent's registration",
          "ok agent: answers, and is registered",
          "ok subscription: messages are taken at https://push.example", endpoint("collection") + " answers",
          endpoint("tag") + "/tag/k-1.json answers with a document", endpoint("events") + " answers",
          endpoint("adFeed") + " answers", endpoint("script") + " answers",
          "ok server: desk 1.5 shows: actions, body, body-markup",
          "ok portal: takes notifications of sandboxed applications"));
}

TEST_F(DesktopDoctorTest, NamesTheFileThatIsWrong) {
  const std::string head = "[D-BUS Service]\nName=com.example.app\nExec=";
  write("other.json", R"({"bundleIdentifier":"com.example.other"})");
  struct Case {
    const char* name;
    std::string text;  ///< empty: there is no such file
    testing::Matcher<std::vector<std::string>> ailments;
  };
  const Case cases[] = {
      {applicationFile, "",
       ElementsAre("fault files: there is no dbus-1/services/com.example.app.service: nothing starts the "
                   "application for a tap")},
      {applicationFile, "[D-BUS Service]\nName=com.example.other\nExec=/bin/false\n",
       ElementsAre(HasSubstr("app.service is for \"com.example.other\""))},
      {applicationFile, head + "/nowhere/app --service\n",
       ElementsAre(HasSubstr("can't be run: /nowhere/app: No such file"))},
      {applicationFile, head + "app\n", ElementsAre(HasSubstr("\"app\" is no absolute path"))},
      {agentFile, "[D-BUS Service]\nName=com.example.app.Push\nExec=/bin/sh\n",
       ElementsAre("fault files: the agent is started without --description", HasSubstr("fault files: "))},
      {agentFile,
       "[D-BUS Service]\nName=com.example.app.Push\nExec=/bin/sh --description " + file("other.json"),
       Contains("fault files: " + file("other.json") + " is that of com.example.other")},
      {entryFile, "", ElementsAre(HasSubstr("fault files: there is no desktop entry"))},
      {entryFile, "[Desktop Entry]\nName=App\n", ElementsAre(HasSubstr("does not say DBusActivatable=true"))},
      {entryFile, "[Desktop Entry]\nDBusActivatable = true\n", IsEmpty()},
      {"app.json", "{", ElementsAre(HasSubstr("fault files: "))}};
  for (const auto& [name, text, expected] : cases) {
    SCOPED_TRACE(name + (": " + text));
    text.empty() ? void(std::filesystem::remove(file(name))) : write(name, text);
    EXPECT_THAT(ailments(), expected);
    install();
  }
}

TEST_F(DesktopDoctorTest, NamesTheFolderOrPermissionThatIsWrong) {
  for (const char* name : {"data/vorselkelp", "cache"}) {
    std::filesystem::remove_all(file(name));
    write(name, "no folder");
    EXPECT_THAT(saidOf("folders"), HasSubstr("is of no use: " + file(name) + " is no folder"));
    std::filesystem::remove(file(name));
  }
  store->setAuthorization(platform::AuthorizationStatus::denied);
  EXPECT_THAT(ailments(), ElementsAre(HasSubstr("fault permission: the user has refused")));
  store->setAuthorization(platform::AuthorizationStatus::notDetermined);
  EXPECT_THAT(ailments(), ElementsAre(HasSubstr("fault permission: the user has not been asked yet")));
}

TEST_F(DesktopDoctorTest, SaysWhatKeepsTheAgentFromItsDistributor) {
  const auto describes = [&](const std::string& name) {
    killAgent();
    describeWith(R"(,"remoteNotifications":{"distributor":")" + name + "\"}");
  };
  describes("third");
  EXPECT_THAT(ailments(), ElementsAre("fault distributor: the agent is to use third, and is registered with "
                                      "desk"));
  ask("Unregister");
  EXPECT_THAT(ailments(), ElementsAre("fault distributor: the agent is to use third, and there is desk",
                                      "fault agent: answers, and was not asked to register"));
  describes("desk");
  EXPECT_EQ(saidOf("distributor"), "ok distributor: desk, which the agent is to use");
  describes("");
  auto& other = startDistributor("other");
  EXPECT_EQ(saidOf("distributor"), "ok distributor: desk, other; the agent is to take desk");
  desk.habits.refusal = "UNAUTHORIZED";
  ask("Register");
  waitUntil([&] { return condition("stage") == "refused"; });
  EXPECT_THAT(ailments(),
              ElementsAre(AllOf(HasSubstr("fault agent: was refused: "), HasSubstr("UNAUTHORIZED"))));
  killAgent();
  desk.habits.refusal.clear();
  subscribe();
  desk.end();
  EXPECT_THAT(ailments(), ElementsAre("fault distributor: desk has the agent's registration, and is not "
                                      "there; there is also other"));
  ask("Unregister");
  other.end();
  ask("Register");
  EXPECT_THAT(ailments(), ElementsAre("fault distributor: there is none: no push reaches this desktop",
                                      HasSubstr("fault agent: waits: ")));
}

TEST_F(DesktopDoctorTest, SaysWhoDoesNotAnswer) {
  desktop->abilities = {"body"};
  EXPECT_THAT(ailments(), ElementsAre("notice server: desk 1.5 has no actions: taps do nothing"));
  desktop.reset();
  portal.reset();
  EXPECT_THAT(ailments(), ElementsAre("fault server: no notification server answers: messages wait for one",
                                      HasSubstr("notice portal: takes no notifications: ")));
  desktop.emplace(address);
  portal.emplace(address);

  describe({});
  EXPECT_THAT(
      ailments(),
      ElementsAre(HasSubstr("fault manifest: has no API key"), HasSubstr("fault endpoints: collection: "),
                  HasSubstr("fault endpoints: tag: "), HasSubstr("notice endpoints: events: "),
                  HasSubstr("notice endpoints: adFeed: "), HasSubstr("notice endpoints: script: ")));
  install();

  killAgent();
  const auto folders =
      system::foldersOf(*system::parseDescription(R"({"bundleIdentifier":"com.example.app"})"));
  ASSERT_TRUE((*State::open(folders.data + "/push"))->set({{"endpoint", "mailto:me"}}));
  EXPECT_THAT(ailments(), ElementsAre(HasSubstr("fault subscription: is of no use: ")));

  killAgent();
  write("start", "exit 3\n");
  std::filesystem::remove_all(file("data/com.example.app"));
  EXPECT_THAT(ailments(), ElementsAre(HasSubstr("fault permission: the application has not run yet"),
                                      HasSubstr("fault agent: does not answer: ")));
}

TEST_F(DesktopDoctorTest, SaysWhatIsNotInstalledAndThatThereIsNoBus) {
  EXPECT_THAT(ailments("com.example.none"),
              ElementsAre("fault bus: it can't start com.example.none",
                          "fault bus: it can't start com.example.none.Push",
                          HasSubstr("none.service: nothing starts the application for a tap"),
                          HasSubstr("none.Push.service: nothing starts its push agent"),
                          HasSubstr("there is no desktop entry"), HasSubstr("com.example.none.json")));
  const Variable none("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
  EXPECT_THAT(ailments(), ElementsAre(HasSubstr("fault bus: the session's bus does not answer: ")));
}

}  // namespace
}  // namespace VorselKelp::agent
