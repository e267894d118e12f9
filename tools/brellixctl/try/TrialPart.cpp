#include <utility>

#include "brellixctl/try/TrialReport.h"

namespace brellixctl {

void TrialPart::compare(std::string what, std::string foretold, std::string happened) {
  const bool same = foretold == happened;
  judge(std::move(what), std::move(foretold), std::move(happened), same);
}

void TrialPart::judge(std::string what, std::string foretold, std::string happened, bool ok) {
  lines.push_back({std::move(what), std::move(foretold), std::move(happened), ok});
}

}  // namespace brellixctl
