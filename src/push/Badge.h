#pragma once

#include <cstdint>
#include <memory>

#include "core/CoreContext.h"

namespace VorselKelp {

/// The count of unread notifications: kept in the store and shown on the application's icon, or put on a
/// content that is being prepared. With push off nothing happens. Changes are atomic across processes.
class Badge {
 public:
  explicit Badge(std::shared_ptr<CoreContext> context) : context_(std::move(context)) {}

  /// A count that overflows stops the process.
  void increase(platform::NotificationContent* content);
  /// Without a count nothing happens; a count of 0 becomes -1.
  void decrease(platform::NotificationContent* content);
  /// Always on the icon.
  void set(std::int64_t value);

 private:
  void show(std::int64_t value, platform::NotificationContent* content);

  std::shared_ptr<CoreContext> context_;
};

}  // namespace VorselKelp
