#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "agent/AgentTest.h"

namespace VorselKelp::agent {

/// Whether everything is tried, which takes minutes, or samples of it.
bool thorough();

/// A line of the table that thorough trials print, when the trial ends.
struct Row {
  explicit Row(std::string name) : what(std::move(name)) {}
  ~Row();
  Row(const Row&) = delete;
  Row& operator=(const Row&) = delete;

  const std::string what;
  const std::chrono::steady_clock::time_point began = std::chrono::steady_clock::now();
  int rounds = 0;
  long hits = 0;
  int faults = 0;
};

/// An agent that is disturbed at one of its calls while pushes, a reminder and a tap go through it.
class Disturbance : public AgentTest {
 public:
  /// Whether this system lets a process decide about another's calls.
  static bool permitted();

 protected:
  Disturbance();

  /// What the injector saw of the agent.
  struct Report {
    long calls = 0;
    long hits = 0;
    std::string first;  ///< the call that was disturbed
  };

  /// Goes the whole way with an agent that is disturbed so, then, when that one came to no good, with one
  /// that nothing disturbs, and checks that nothing is lost or came twice.
  Report round(const std::string& options);
  /// Disturbs the first call, the second, … up to the last; every so-many-th.
  void roundsAtEach(const std::string& options, int every, Row& row);

 private:
  void putBack();
  bool go();
  void sendMissing();
  bool until(const std::function<bool()>& done);
  bool ended();
  void judge();
  [[nodiscard]] std::size_t timesShown(const std::string& title) const;
  void takeResponses();

  distributor::Distributor* desk_ = nullptr;
  freedesktop::NotificationServer server_;
  FakeApplication application_;
  bool disturbed_ = false;
  std::map<std::string, Status> answers_;  ///< by title
  std::set<std::string> again_;            ///< were shown, and are not known to be
  std::size_t taken_ = 0;
};

}  // namespace VorselKelp::agent
