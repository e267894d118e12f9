#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelpSystem/Description.h"
#include "VorselKelpSystem/NotificationStore.h"
#include "VorselKelpWebPush/Subscription.h"
#include "distributor/Distributor.h"
#include "freedesktop/BusTest.h"
#include "freedesktop/NotificationServer.h"

namespace VorselKelp::agent {

/// The application's side of the bus: what others activate in it.
class FakeApplication {
 public:
  explicit FakeApplication(const std::string& address);

  struct Activation {
    std::string action;
    std::string target;           ///< as the bus's text form
    std::string activationToken;  ///< under both names
  };
  std::vector<Activation> activations;
  bool refuses = false;

 private:
  freedesktop::BusService service_;
};

/// A folder that XDG's folders lie in, and the agent's service file, made before the bus.
struct AgentFolder {
  AgentFolder();
  ~AgentFolder();
  /// The description gets these members.
  void describe(const std::string& more) const;
  /// Has the bus start `program`: how long it stays idle (seconds), and a command that runs it the next time
  /// that there is a file "disturbance" with that command's options.
  void start(const std::string& under, const std::string& idle) const;

  std::string path;
  std::string program = AGENT;
};

/// An agent that the bus starts when somebody calls it.
class AgentTest : private AgentFolder, public freedesktop::BusTest {
 protected:
  AgentTest();
  ~AgentTest() override;

  using AgentFolder::describe;
  using AgentFolder::path;
  using AgentFolder::program;
  using AgentFolder::start;
  using Habits = distributor::Habits;

  distributor::Distributor& startDistributor(const std::string& name, Habits habits = {});
  /// Calls a method of the agent's own interface and waits for the condition that it answers.
  std::string ask(const char* method);
  /// Its condition's "stage", or its "subscription" and so on; empty: there is none.
  std::string condition(const char* member);
  /// The application has removed a notification.
  void takeAway(const char* identifier);
  /// Registers, and waits for the subscription.
  webpush::Subscription subscribe();
  /// Sends a payload to the one registration of a distributor; the answer comes by waiting().
  void send(distributor::Distributor& distributor, const std::string& text, const std::string& id = {});
  /// The same unencrypted.
  void sendBytes(distributor::Distributor& distributor, const std::string& bytes, const std::string& id = {});
  /// The agent's number; 0: it does not run.
  [[nodiscard]] pid_t process() const;
  [[nodiscard]] bool running() const { return process() != 0; }
  void waitUntilRunning(bool running);
  /// How many rows of a table the agent has written down.
  static std::int64_t rowsOf(const std::string& table);
  /// How many of the desktop's numbers it has written down.
  static std::int64_t numbersKept() { return rowsOf("shown"); }
  void killAgent();
  /// What the agent has written.
  [[nodiscard]] std::string lines() const;
  [[nodiscard]] std::string file(const char* name) const { return path + "/" + name; }

  int acknowledged = 0;
  int refused = 0;
  std::unique_ptr<system::NotificationStore> store;
  std::optional<webpush::Subscription> subscription;

 private:
  VariantPtr callAgent(const char* interface, const char* method, GVariant* arguments);

  unsigned pulse_ = 0;
  std::unique_ptr<Bus> bus_;
  std::vector<std::pair<std::unique_ptr<Bus>, std::unique_ptr<distributor::Distributor>>> distributors_;
};

/// A payload of the library's own form.
std::string payload(const std::string& title);

}  // namespace VorselKelp::agent
