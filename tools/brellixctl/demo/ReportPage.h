#pragma once

#include <string>
#include <vector>

#include "brellixctl/demo/JourneyRecord.h"

namespace brellixctl {

/// One HTML page, with everything in it, that tells what happened in swim lanes.
std::string reportPage(const std::vector<Happening>& happenings);

}  // namespace brellixctl
