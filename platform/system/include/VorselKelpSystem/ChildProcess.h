#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/JSONAny.h"
#include "VorselKelp/Result.h"

namespace VorselKelp::system {

/// A process of the application, as it is to be run. It tells what happens in events: one JSON object a line.
struct ChildCommand {
  std::string program;  ///< an absolute path
  std::vector<std::string> arguments;
  std::vector<std::pair<std::string, std::string>> environment;  ///< in addition to this process's
  std::string input;                                             ///< what it reads on standard input
  int channel = 1;        ///< the descriptor that it writes its events to, from 1 to 9
  double timeLimit = 30;  ///< seconds; a process that is still there 5 seconds later is killed
  /// Bytes; a process that writes more of anything is killed.
  std::size_t outputLimit = std::size_t{256} << 20;
};

struct VORSELKELP_API ChildOutcome {
  std::vector<JSONAny> events;  ///< in the order in which they came, up to "ended"
  /// What else it wrote to standard output and standard error.
  std::vector<std::string> errorLines;
  bool ended = false;  ///< it said of itself that it was through
  int exitStatus = 0;  ///< only when `stopReason` is absent
  /// Why it did not end in good order.
  std::optional<std::string> stopReason;

  /// The values of all events of this name.
  [[nodiscard]] std::vector<JSONAny> valuesOf(std::string_view event) const;
  [[nodiscard]] std::optional<JSONAny> firstOf(std::string_view event) const;
};

/// What happens while a process runs, on the thread that waits for it.
struct ChildWatch {
  std::function<void(const JSONAny& event)> event;  ///< each as it comes; may be empty
  std::function<void()> tick;                       ///< several times a second; may be empty
  int stop = -1;  ///< the process is killed as soon as there is something to read from this descriptor
};

/// Runs the process to its end. What processes that it leaves behind still say is not waited for. An error
/// when it could not be started; its code is the system's.
VORSELKELP_API Result<ChildOutcome> runChild(const ChildCommand& command, const ChildWatch& watch = {});

}  // namespace VorselKelp::system
