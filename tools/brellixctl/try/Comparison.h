#pragma once

#include <functional>
#include <string>
#include <vector>

#include "VorselKelp/PayloadLint.h"
#include "brellixctl/Operations.h"
#include "brellixctl/try/TrialReport.h"

namespace brellixctl {

using URLList = std::vector<std::string>;

/// Holds what happened against what lint foretold, moment by moment.
class Comparison {
 public:
  using Names = std::function<std::string(std::string)>;

  /// The application's own requests go to `ownServer`, and nothing is foretold of them. `original` gives a
  /// text of the trial the payload's own addresses.
  Comparison(VorselKelp::PayloadLint lint, std::string ownServer, Names original)
      : lint_(std::move(lint)), ownServer_(std::move(ownServer)), original_(std::move(original)) {}

  /// Of the notification, or of what the application gets of a silent push.
  [[nodiscard]] TrialPart delivery(const PushOutcome& pushed) const;
  /// The application group's store before the delivery and after it.
  [[nodiscard]] TrialPart stored(const VorselKelp::JSONAny& before, const VorselKelp::JSONAny& after) const;
  /// A tap on the notification or on a button.
  [[nodiscard]] TrialPart tap(const VorselKelp::PayloadLint::Tap& told, const TapOutcome& tapped) const;

  /// A carousel that is opened and stops at once.
  [[nodiscard]] TrialPart stoppedCarousel(const ShowOutcome& shown) const;
  /// What opening the carousel requests; `keepsArrows` where the extension has a container for them.
  [[nodiscard]] TrialPart opening(const ShowOutcome& shown, bool keepsArrows) const;
  /// Page `page` as it is shown; `earlier` are the requests up to the page before.
  [[nodiscard]] TrialPart page(std::size_t page, const ShowOutcome& shown, const URLList& earlier) const;
  /// A tap on page `page`; `earlier` are the requests until it is shown.
  [[nodiscard]] TrialPart pageTap(std::size_t page, const ShowOutcome& tapped, const URLList& earlier) const;

  /// The requests that are not the application's own.
  [[nodiscard]] URLList requestsOf(const Outcome& outcome) const;
  /// Whether a stop is foretold for this moment.
  [[nodiscard]] bool stops(VorselKelp::PayloadLint::Stop::When when, std::size_t page = 0) const;
  [[nodiscard]] const VorselKelp::PayloadLint& lint() const { return lint_; }

 private:
  [[nodiscard]] TrialPart silentDelivery(const PushOutcome& pushed) const;
  void addPicture(TrialPart& part, const PushOutcome& pushed) const;
  void addShown(TrialPart& part, const PushOutcome& pushed) const;
  void addStop(TrialPart& part, bool foretold, const Outcome& outcome, bool stopped) const;

  const VorselKelp::PayloadLint lint_;
  const std::string ownServer_;
  const Names original_;
};

}  // namespace brellixctl
