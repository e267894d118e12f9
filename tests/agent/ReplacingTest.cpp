#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "VorselKelpPosix/Descriptor.h"
#include "VorselKelpWebPush/Envelope.h"
#include "agent/AgentTest.h"

namespace VorselKelp::agent {
namespace {

using freedesktop::NotificationServer;

/// An agent whose extension waits for the test with each message.
class ReplacingTest : public AgentTest {
 protected:
  ReplacingTest() {
    for (const char* name : {"older", "newer"}) ::mkfifo(file(name).c_str(), 0600);
    std::ofstream(file("service")) << "#!/bin/sh\npayload=$(cat)\ncase $payload in\n"
                                   << "  *older*) read -r go < " << file("older") << " ;;\n"
                                   << "  *newer*) read -r go < " << file("newer") << " ;;\nesac\n"
                                   << "printf %s \"$payload\" | exec "
                                   << std::filesystem::path(AGENT).parent_path().string()
                                   << "/vorsel-push-service \"$@\"\n";
    ::chmod(file("service").c_str(), 0700);
    describe(R"(,"programs":{"service":"service"})");
  }

  static std::string changeable(const char* title) {
    return R"({"aps":{"mutable-content":1,"alert":{"title":")" + std::string(title) +
           R"(","n":{"body":"b"}}}})";
  }
  void letGo(const char* name) const {
    const posix::Descriptor pipe(::open(file(name).c_str(), O_WRONLY | O_CLOEXEC));
    ASSERT_EQ(::write(pipe.number(), "\n", 1), 1);
  }
};

TEST_F(ReplacingTest, ShowsNothingAgainThatWasReplacedWhileItWaited) {
  auto& desk = startDistributor("desk");
  subscribe();
  auto server = std::make_unique<NotificationServer>(address);
  server->refusal = "org.freedesktop.Notifications.MaxNotificationsExceeded";
  for (const char* title : {"older", "newer"})
    send(desk, *webpush::putInto({"id", "storm", {}}, changeable(title)));
  waitUntil([&] { return acknowledged == 2; });
  letGo("older");
  waitUntil([&] { return lines().find("Notifications wait to be shown") != std::string::npos; });
  server->refusal.clear();
  letGo("newer");
  waitUntil([&] { return server->shown.size() == 2 && numbersKept() == 1; });
  EXPECT_EQ(server->shown[1].title, "newer");

  server = nullptr;
  server = std::make_unique<NotificationServer>(address);
  send(desk, payload("end"));
  waitUntil([&] { return !server->shown.empty() && server->shown.back().title == "end"; });
  EXPECT_EQ(server->shown.size(), 1U);
}

}  // namespace
}  // namespace VorselKelp::agent
