#pragma once

#include <string>

#include "VorselKelpWebPush/ReceiverKeys.h"
#include "state/State.h"

namespace VorselKelp::agent {

/// What lasts of a registration from one life of the agent to the next: a copy of what the state has. Where
/// that can't be written, which is an error, this life goes on with what is told of each step. Main thread.
class RegistrationRecord {
 public:
  /// Before anything else; the state must outlive it. Answers the endpoint; empty: there is none.
  Result<std::string> load(State& state);

  /// Whether the application wants one.
  [[nodiscard]] bool wanted() const { return wanted_; }
  /// Its name on the bus; empty: there has been none. It remains when the registration ends.
  [[nodiscard]] const std::string& distributor() const { return distributor_; }
  /// Empty: nothing is registered, nor asked for.
  [[nodiscard]] const std::string& token() const { return token_; }
  /// With which the token was registered.
  [[nodiscard]] const std::string& vapidKey() const { return vapidKey_; }
  /// The session of the bus, and the connection, that took the registration; empty: none has.
  [[nodiscard]] const std::string& registeredIn() const { return registeredIn_; }
  [[nodiscard]] const webpush::ReceiverKeys& keys() const { return keys_; }

  /// Unless it can't be written.
  Status want();
  /// In any case.
  Status giveUp();
  /// Another token and other keys, for another distributor or another sender. Without them, which is an
  /// error, the token is empty.
  Status renew(const std::string& distributor, const std::string& vapidKey);
  /// In any case; empty: it may have forgotten the registration.
  Status noteSession(const std::string& session);
  /// Empty: there is none at present.
  Status noteEndpoint(const std::string& endpoint);
  /// The distributor has ended the registration: in any case.
  Status forget();

 private:
  State* state_ = nullptr;
  bool wanted_ = false;
  std::string distributor_;
  std::string token_;
  std::string vapidKey_;
  std::string registeredIn_;
  webpush::ReceiverKeys keys_;
};

}  // namespace VorselKelp::agent
