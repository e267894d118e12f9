#pragma once

#include <cstdint>
#include <memory>

#include "core/CoreContext.h"

namespace BrellixPush {

/// Follows one request for the permission: reports that the user is asked, and the outcome when it differs
/// from the last one seen. Any thread.
class PermissionOutcome : public std::enable_shared_from_this<PermissionOutcome> {
 public:
  explicit PermissionOutcome(std::shared_ptr<VorselKelp::CoreContext> context)
      : context_(std::move(context)) {}

  /// Reports the asked event and remembers what was decided before.
  void begin();
  /// Makes the system's request, on the main queue; its answer is followed up.
  void request();

 private:
  void ask(VorselKelp::CoreContext& context);
  void answered(VorselKelp::CoreContext& context, std::int64_t status) const;

  std::weak_ptr<VorselKelp::CoreContext> context_;
  std::int64_t previous_ = 0;
};

}  // namespace BrellixPush
