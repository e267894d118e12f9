#pragma once

#include <string>
#include <vector>

#include "VorselKelp/JSONAny.h"
#include "brellixctl/fleet/Fleet.h"

namespace brellixctl {

/// The phases as tables of lines: requests by kind, how many a second, how long they took.
std::string inWords(const std::vector<FleetPhase>& phases);
VorselKelp::JSONAny::Dictionary toJSON(const std::vector<FleetPhase>& phases);

/// Requests of a phase that failed.
std::size_t failuresOf(const FleetPhase& phase);

}  // namespace brellixctl
