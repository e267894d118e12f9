#pragma once

#include <memory>
#include <optional>
#include <string>

#include "core/CoreContext.h"
#include "push/PushTables.h"

namespace VorselKelp {

/// What opening each delivered notification does: written by the service extension, taken once by the
/// application.
class OpenTargets {
 public:
  explicit OpenTargets(std::shared_ptr<CoreContext> context) : context_(std::move(context)) {}

  /// Writes the line "conv", which goes with every reading of the click trackers. To be called before
  /// store(), which reads them in order to change them, usually inside a transaction of the caller's, where
  /// nothing may be printed.
  void announce() const { context_->print("conv"); }
  /// Remembers the click trackers and the default tap's URL of a notification.
  void store(const Conversion& conversion, const std::string& identifier);
  /// Remembers the URL of one action. The server's placeholder in it becomes the action's identifier, or "0"
  /// for the default tap.
  void record(const std::string& identifier, const std::string& action, const std::string& url);

  struct Taken {
    std::optional<StorageManager::TextList> trackers;
    std::optional<StorageManager::TextMap> urls;  ///< by action identifier
  };
  /// Reads and removes what is stored for a notification, as one step: of two opens at once, one finds it.
  [[nodiscard]] Taken take(const std::string& identifier);

 private:
  std::shared_ptr<CoreContext> context_;
};

}  // namespace VorselKelp
