#pragma once

#include <string>
#include <vector>

#include "VorselKelp/JSONAny.h"

namespace phone {

/// What all operations on the application's processes come to.
struct Outcome {
  std::string failure;  ///< why it did not come to what was asked for; empty when it did
  /// "method" and "url" of each, in the order in which they were sent, and its "status" or "error" once it
  /// was answered.
  std::vector<VorselKelp::JSONAny> requests;
  std::vector<VorselKelp::JSONAny> console;
  std::vector<std::string> errorLines;  ///< what else a person should know
};

}  // namespace phone
