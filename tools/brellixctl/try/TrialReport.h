#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "VorselKelp/JSONAny.h"

namespace brellixctl {

/// One thing of which something was foretold, in words.
struct TrialLine {
  std::string what;
  std::string foretold;
  std::string happened;
  bool ok = true;
};

/// What belongs to one moment of the trial.
struct TrialPart {
  std::string title;
  std::vector<TrialLine> lines;

  /// Fine when both texts are the same.
  void compare(std::string what, std::string foretold, std::string happened);
  /// For what may come true in more than one way.
  void judge(std::string what, std::string foretold, std::string happened, bool ok);
};

/// What became of a payload.
struct TrialReport {
  std::string payload;                          ///< the file
  std::map<std::string, std::string> standIns;  ///< servers on this machine, by those they stand for
  std::vector<std::string> notes;               ///< what else to know, a sentence each
  std::vector<TrialPart> parts;

  [[nodiscard]] std::size_t lineCount() const;
  [[nodiscard]] std::size_t differences() const;
  /// Empty when everything came as foretold.
  [[nodiscard]] std::string failure() const;
};

VorselKelp::JSONAny::Dictionary toJSON(const TrialReport& report);
/// Lines of plain text.
std::string inWords(const TrialReport& report);
/// One HTML page with everything in it.
std::string trialPage(const TrialReport& report);

}  // namespace brellixctl
