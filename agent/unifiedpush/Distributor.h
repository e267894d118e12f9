#pragma once

#include <string>
#include <vector>

#include "VorselKelp/platform/UniqueFunction.h"
#include "bus/Bus.h"

namespace VorselKelp::agent {

/// The prefix of every distributor's name on the bus, without the dot behind it.
inline constexpr const char* distributorNames = "org.unifiedpush.Distributor";

/// What an application asks a distributor for.
struct RegistrationRequest {
  std::string distributor;
  std::string service;      ///< the name under which the connector is reached
  std::string token;        ///< at most 100 bytes, ours to choose
  std::string description;  ///< for the user, at most 100 bytes
  std::string vapidKey;     ///< the sender's public key, base64url; empty: any sender
};

/// What it says. An endpoint comes by a call of its own.
struct RegistrationAnswer {
  enum class Outcome { accepted, later, refused, absent };
  Outcome outcome = Outcome::absent;
  std::string reason;  ///< of what was not accepted; one line
};

/// Asks in the newest version that the distributor speaks. The answer may come after a minute, or never.
void registerWith(Bus& bus, const RegistrationRequest& request,
                  platform::UniqueFunction<void(RegistrationAnswer)> answer);
/// Nobody waits for what it says.
void unregisterFrom(Bus& bus, const std::string& distributor, const std::string& token);

/// The distributors that run or can be started, in the order of their names.
void listDistributors(Bus& bus, platform::UniqueFunction<void(std::vector<std::string>)> answer);

/// The one to use: the wanted one where one is named, else the first; empty when it is not there.
std::string chooseDistributor(const std::vector<std::string>& there, const std::string& wanted);

}  // namespace VorselKelp::agent
