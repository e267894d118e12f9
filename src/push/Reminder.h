#pragma once

#include <memory>
#include <string>

#include "core/CoreContext.h"

namespace VorselKelp {

/// The repeating notification that reminds an absent user. There is at most one: all share one identifier.
class Reminder {
 public:
  explicit Reminder(std::shared_ptr<CoreContext> context) : context_(std::move(context)) {}

  /// The reminder's title from its next scheduling on.
  void setText(const std::string& text);
  /// Schedules the reminder every `interval` seconds, at least every 60.
  void schedule(double interval);
  void cancel();
  /// Schedules it anew with the stored interval; nothing when none is stored.
  void update();

 private:
  std::shared_ptr<CoreContext> context_;
};

}  // namespace VorselKelp
