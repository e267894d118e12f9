#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelpWebPush/Subscription.h"
#include "bus/Bus.h"
#include "state/State.h"
#include "unifiedpush/Distributor.h"
#include "unifiedpush/RegistrationRecord.h"

namespace VorselKelp::agent {

struct RegistrationOptions {
  std::string service;      ///< the agent's name on the bus
  std::string description;  ///< for the user
  std::string vapidKey;     ///< of the one sender; empty: any
  std::string wanted;       ///< the distributor that the user or the description names; empty: none
};

/// The agent's registration with a distributor, kept for as long as the application wants it: across changes
/// of the endpoint, restarts of the distributor, and times in which there is none.
///
/// It stays with the distributor that has given it a subscription as long as that one runs or the bus can
/// start it; one that ends meanwhile is started again. One that is neither may come yet, at a login above
/// all: another takes its place when it has been missing for `graceSeconds` while the agent ran, or at once
/// when the options name the other. They begin when the agent finds at its start that it is missing, or with
/// its end while the agent runs. For the latter the agent does not stay: the next one, if this one has left,
/// begins them anew.
///
/// Main thread.
class Registration {
 public:
  static constexpr double graceSeconds = 300;

  enum class Stage {
    none,        ///< the application does not want one
    pending,     ///< it will come; `reason` says what it waits for
    refused,     ///< it will not come, unless the application asks again
    registered,  ///< there is a subscription
  };
  struct Condition {
    Stage stage = Stage::none;
    std::string reason;
    std::optional<webpush::Subscription> subscription;
    std::string distributor = {};  ///< its name on the bus: it has the registration, or is asked for it
    friend bool operator==(const Condition&, const Condition&) = default;
  };

  /// `changed` comes with every new condition, and when waits() may have ended.
  Registration(Bus& bus, std::shared_ptr<platform::MainQueue> mainQueue, RegistrationOptions options,
               std::function<void()> changed);
  ~Registration();
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;

  /// Goes on from what the state has. `known` comes when knows() can tell, unless the state can't be read.
  Status begin(State& state, platform::UniqueFunction<void()> known);

  void want();
  void giveUp();
  [[nodiscard]] const Condition& condition() const { return condition_; }
  /// Whether something is to come that only a running agent hears of.
  [[nodiscard]] bool waits() const { return condition_.stage == Stage::pending || (patience_ && *patience_); }
  /// The distributor that the user or the description names; empty: none.
  [[nodiscard]] const std::string& wanted() const { return options_.wanted; }
  /// Whether the distributor has yet to answer, or the bus.
  [[nodiscard]] bool asks() const { return asking_ || looking_ > 0; }

  /// Whether this connection is the registered distributor's, and the token is ours.
  [[nodiscard]] bool knows(const std::string& sender, const std::string& token) const;
  /// Now, or when knows() can tell: who starts the agent speaks before that.
  void whenKnown(platform::UniqueFunction<void()> work);
  // What the distributor says, from whenKnown() on; others are not heard.
  void newEndpoint(const std::string& sender, const std::string& token, const std::string& endpoint);
  void unregistered(const std::string& sender, const std::string& token);

 private:
  Status load(State& state);
  void goOn(platform::UniqueFunction<void()> known);
  void settle(Condition condition);
  void fail(const Error& error);
  static void tell(const Status& written);
  void ownerIs(const std::string& name, const std::string& owner);
  void lost();
  void findOwner(platform::UniqueFunction<void()> found);
  void choose(bool patient = true);
  void look(platform::UniqueFunction<void(const std::vector<std::string>& there)> found);
  void takeOf(const std::vector<std::string>& there, bool patient);
  void awaitReturn(bool stay);
  void chosen(const std::string& distributor);
  void leaveDistributor();
  void renew(const std::string& distributor);
  void ask();
  void answered(const RegistrationAnswer& answer);
  void noteStay();
  void askAgainLater();
  [[nodiscard]] std::string session() const;
  /// Whether what is registered is what is wanted, and the distributor that runs knows it.
  [[nodiscard]] bool holds() const;

  Bus& bus_;
  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const RegistrationOptions options_;
  const std::function<void()> changed_;
  const std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
  RegistrationRecord record_;
  Condition condition_;
  bool asking_ = false;
  unsigned looking_ = 0;  ///< how often the bus is being asked for the distributors
  std::string owner_;     ///< the distributor's connection; empty while it does not run
  bool known_ = false;
  std::vector<platform::UniqueFunction<void()>> early_;
  double pause_ = 0;  ///< seconds, before the next try; 0: none is needed
  /// Whether the agent stays for the distributor's return; null: it is not waited for.
  std::shared_ptr<bool> patience_;
};

}  // namespace VorselKelp::agent
