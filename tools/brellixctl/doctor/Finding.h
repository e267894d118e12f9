#pragma once

#include <string>
#include <vector>

namespace brellixctl {

/// One thing that was looked at.
struct Finding {
  enum class State {
    fine,
    notice,  ///< works, but may not be what was meant
    fault
  };
  State state = State::fine;
  std::string check;  ///< "manifest", "home", "group", "switches", "endpoints", "permission", "token",
                      ///< "store"; of an installed application also "bus", "files", "folders", "distributor",
                      ///< "agent", "subscription", "server", "portal"
  std::string what;
  std::string mend;  ///< what to do about it; empty when fine
};

using Findings = std::vector<Finding>;

inline Finding fine(std::string check, std::string what) {
  return {Finding::State::fine, std::move(check), std::move(what), {}};
}
inline Finding notice(std::string check, std::string what, std::string mend) {
  return {Finding::State::notice, std::move(check), std::move(what), std::move(mend)};
}
inline Finding fault(std::string check, std::string what, std::string mend) {
  return {Finding::State::fault, std::move(check), std::move(what), std::move(mend)};
}

}  // namespace brellixctl
