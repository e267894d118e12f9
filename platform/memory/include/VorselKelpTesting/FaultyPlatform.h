#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Platform.h"

namespace VorselKelp::testing_platform {

/// The calls that a system may refuse or leave unanswered.
enum class FaultPoint {
  storeOpen,    ///< a suite is asked for
  storeBegin,   ///< a transaction begins
  storeWrite,   ///< a value or an entry is set or removed
  storeCommit,  ///< a transaction ends
  fileWrite,    ///< a file is written, a piece of it, given its name, or removed
  fileRead,
  fileLock,
  request,
  permission,    ///< the user is asked, or the settings are
  categories,    ///< the registered ones are asked for
  notification,  ///< the notification centre is told something: categories, notifications to show or remove
  picture,       ///< one is recognised, decoded or opened
};

enum class Fault {
  /// Refused with the rule's error: a store drops the write, and with it its whole transaction; a file, a
  /// picture and a request answer with the error; the notification centre does nothing, and answers that
  /// there is nothing.
  refusal,
  /// A request or a question is not answered before FaultPlan::end(). Otherwise a refusal.
  noAnswer,
  /// The same, until FaultPlan::releaseAnswers().
  lateAnswer,
  /// A request is answered with status 500 and an empty body. Otherwise a refusal.
  errorAnswer,
  /// The process is killed before the call: from here on nothing that it does has an effect, on this platform
  /// or outside. A transaction that is under way is undone; a file that is being written stays under its
  /// passing name. The code goes on, of course: whatever it still tells the test counts for nothing.
  stop,
};

struct FaultRule {
  std::size_t at = 1;  ///< the first call that is disturbed, counted from 1
  Fault fault = Fault::refusal;
  bool onwards = false;              ///< all later ones as well
  std::optional<FaultPoint> only{};  ///< counts and disturbs only these
  Error error{"No space left on device", 28};
};

/// Counts the calls that may fail, on one or several platforms that were made with faulty(), and says which
/// of them do. Without a rule all go through. Thread-safe. It must live as long as what the platforms are
/// used for: files that a stopped process was writing are let go with it.
class VORSELKELP_API FaultPlan {
 public:
  FaultPlan() = default;
  explicit FaultPlan(FaultRule rule) : rule_(rule) {}

  /// Every call so far, in order, disturbed or not; none after a stop.
  [[nodiscard]] std::vector<FaultPoint> calls() const;
  [[nodiscard]] std::size_t disturbed() const;
  [[nodiscard]] bool stopped() const;
  /// Gives the answers that came late, on the calling thread; returns how many.
  std::size_t releaseAnswers();
  /// The end of a process: answers that came late are given, and what was never answered is answered with an
  /// error (a request with code -999). Whoever waits may hold the platform, which nobody else would let go.
  void end();

  // For services: those of faulty(), and a test's own.

  /// Counts a call and says what happens to it: nothing, when absent. After a stop always `stop`.
  std::optional<Fault> next(FaultPoint point);
  [[nodiscard]] const Error& error() const { return rule_.error; }
  void holdAnswer(std::function<void()> give);
  void holdUnanswered(std::function<void()> cancel);
  /// Lets go of it with the plan and not before.
  void keep(std::shared_ptr<void> thing);

 private:
  const FaultRule rule_{.at = 0};
  mutable std::mutex mutex_;
  std::vector<FaultPoint> calls_;
  std::size_t counted_ = 0;
  std::size_t disturbed_ = 0;
  bool stopped_ = false;
  std::vector<std::function<void()>> late_;
  std::vector<std::function<void()>> unanswered_;
  std::vector<std::shared_ptr<void>> kept_;
};

/// A platform that does what `platform` does, except where the plan says otherwise. `platform` itself stays
/// as it is; one plan may disturb several processes.
VORSELKELP_API std::shared_ptr<platform::Platform> faulty(const platform::Platform& platform,
                                                          std::shared_ptr<FaultPlan> plan);

}  // namespace VorselKelp::testing_platform
