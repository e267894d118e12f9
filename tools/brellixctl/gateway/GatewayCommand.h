#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>
#include <vector>

#include "brellixctl/Commands.h"

namespace brellixctl {

struct GatewayRequest {
  std::uint16_t port = 2197;
  std::string certificate;  ///< file in PEM; empty: one of its own, and its key
  std::string key;
  std::vector<std::string> providerKeys;  ///< KEYID=TEAMID=FILE; none: one of its own
  std::vector<std::string> topics;        ///< none: any
  std::vector<std::string> homes;         ///< of the simulated devices, each with the manifest beside it
  std::vector<std::string> manifests;
  std::string vapid;               ///< the sender's key or its file; empty: the sender stays unknown
  std::string subject;             ///< how to reach the sender; goes with `vapid`
  std::string trust;               ///< a file with the authorities of push services; empty: the system's
  bool localPushServices = false;  ///< those of this machine are posted to as well
  std::string log;                 ///< file; empty: none
  bool open = false;               ///< senders need no token
};

/// What the command line takes behind "gateway". The request outlives the command.
void addGatewayOptions(CLI::App& gateway, GatewayRequest& request);

/// Serves until the user ends it. 0 then.
int runGateway(const CommonOptions& common, const GatewayRequest& request);

}  // namespace brellixctl
