#pragma once

#include <memory>

namespace VorselKelp {

class CoreContext;

/// While it stands, what this thread constructs belongs to `context` instead of the process's installed core:
/// for several cores in one process. Scopes nest; they end in the reverse order of their beginning, on the
/// thread on which they began.
class CoreScope {
 public:
  explicit CoreScope(std::shared_ptr<CoreContext> context);
  CoreScope(const CoreScope&) = delete;
  CoreScope& operator=(const CoreScope&) = delete;
  ~CoreScope();

  /// The context of the innermost scope of this thread; null when there is none.
  static std::shared_ptr<CoreContext> innermost();

 private:
  const std::shared_ptr<CoreContext> context_;
  const CoreScope* const outer_;
};

}  // namespace VorselKelp
