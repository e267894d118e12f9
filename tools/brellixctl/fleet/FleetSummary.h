#pragma once

#include <string>
#include <vector>

#include "VorselKelp/JSONAny.h"
#include "brellixctl/fleet/Fleet.h"

namespace brellixctl {

/// What a whole run came to.
struct FleetSummary {
  std::vector<FleetPhase> phases;
  std::string server;
  ServerFence::Counts turned;
};

/// The phases as tables of lines: requests by kind, how many a second, how long they took; and what failed.
std::string inWords(const FleetSummary& summary);
VorselKelp::JSONAny::Dictionary toJSON(const FleetSummary& summary);

/// Why the run counts as failed: it was given up, or more than `percent` of its requests failed. Empty when
/// it does not.
std::string failureIn(const FleetSummary& summary, double percent);

/// Whether there was any answer that was wanted.
bool anySuccess(const FleetPhase& phase);

}  // namespace brellixctl
