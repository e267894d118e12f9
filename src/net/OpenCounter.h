#pragma once

#include <cstdint>
#include <memory>

#include "core/CoreContext.h"

namespace VorselKelp {

/// Counts the open reports that failed and are still owed. Every step is atomic across threads and processes.
class OpenCounter {
 public:
  explicit OpenCounter(std::shared_ptr<CoreContext> context) : context_(std::move(context)) {}

  /// How many of the owed ones to send now; they are owed no more. Bounded, so that a damaged counter floods
  /// nobody: what is beyond stays owed.
  [[nodiscard]] std::int64_t take() const;
  /// One report failed.
  void owe() const;
  /// One report was accepted. Lowers the counter only while it is 2 or more: the last one owed is left to the
  /// next report.
  void acknowledge() const;

 private:
  std::shared_ptr<CoreContext> context_;
};

}  // namespace VorselKelp
