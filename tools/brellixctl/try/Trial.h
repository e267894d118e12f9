#pragma once

#include <string>
#include <vector>

#include "brellixctl/Operations.h"
#include "brellixctl/try/Comparison.h"

namespace brellixctl {

struct TrialPlan {
  Target target;        ///< on a device that nobody has used
  std::string payload;  ///< the file that is pushed
  std::string folder;   ///< for the devices of taps and pages
  std::string identifier;
};

/// Delivers a payload to the application once. Whatever the user can touch is touched on a device of its own,
/// a copy of the one with the delivered notification.
class Trial {
 public:
  /// `comparison` outlives it.
  Trial(TrialPlan plan, const Comparison& comparison) : plan_(std::move(plan)), comparison_(comparison) {}

  /// An error says why something could not be tried at all.
  VorselKelp::Result<std::vector<TrialPart>> run();

 private:
  VorselKelp::Status start();
  VorselKelp::Status deliver();
  VorselKelp::Status tapAll();
  VorselKelp::Status openCarousel();
  VorselKelp::Status walkPages();
  /// What is shown after so many touches of the right arrow, and a touch of the page where `opens`.
  VorselKelp::Result<ShowOutcome> showPage(std::size_t page, bool opens);
  VorselKelp::Result<Target> copiedDevice();

  const TrialPlan plan_;
  const Comparison& comparison_;
  int copies_ = 0;
  std::vector<TrialPart> parts_;
};

}  // namespace brellixctl
