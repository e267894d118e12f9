#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "VorselKelp/JSONAny.h"
#include "VorselKelp/Result.h"

namespace brellixctl {

/// A process of the application, as it is to be run. Its events come over a descriptor of their own.
struct ChildCommand {
  std::string program;  ///< an absolute path, or the name of an executable beside this one
  std::vector<std::string> arguments;
  std::vector<std::pair<std::string, std::string>> environment;  ///< in addition to this process's
  std::string input;                                             ///< what it reads on standard input
  double timeLimit = 30;  ///< seconds; a process that is still there some seconds later is killed
};

struct ChildOutcome {
  std::vector<VorselKelp::JSONAny> events;  ///< in the order in which they came, up to "ended"
  std::vector<std::string> errorLines;      ///< what it wrote to standard output and standard error
  bool ended = false;                       ///< it said of itself that it was through
  int exitStatus = 0;                       ///< only when `stopReason` is absent
  /// Why it did not end in good order.
  std::optional<std::string> stopReason;

  /// The values of all events of this name.
  [[nodiscard]] std::vector<VorselKelp::JSONAny> valuesOf(std::string_view event) const;
  [[nodiscard]] std::optional<VorselKelp::JSONAny> firstOf(std::string_view event) const;
};

/// Runs the process to its end. What processes that it leaves behind still say is not waited for.
VorselKelp::Result<ChildOutcome> runChild(const ChildCommand& command);

}  // namespace brellixctl
