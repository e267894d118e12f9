#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/CoreContext.h"
#include "push/PushTables.h"

namespace VorselKelp {

/// Registers a category of buttons for one notification next to those already registered, and keeps the
/// number of such categories bounded. Blocks the calling thread for the notification centre's answer, at most
/// 5 seconds.
class CategoryHelper {
 public:
  /// A registered category whose identifier is still to be remembered. Until this object goes, no other core,
  /// where the lock could be made, changes the registered set.
  struct Registration {
    std::string identifier;
    std::vector<std::string> remembered;  ///< oldest first, the new one last
    std::unique_ptr<platform::FileLock> lock;
  };

  explicit CategoryHelper(std::shared_ptr<CoreContext> context) : context_(std::move(context)) {}

  [[nodiscard]] Registration add(const std::vector<Action>& actions, const std::string& requestIdentifier);
  /// Remembers the identifiers of a registration.
  void save(const Registration& registration);

  /// The registered categories; none when the notification centre did not answer in time.
  [[nodiscard]] std::vector<platform::NotificationCategory> currentCategories();
  /// The remembered identifiers, oldest first. They are read from the process's standard domain and written
  /// to the shared store: the bound holds where the two are one.
  [[nodiscard]] std::vector<std::string> storedIdentifiers();

 private:
  [[nodiscard]] std::unique_ptr<platform::FileLock> lockCategories();

  std::shared_ptr<CoreContext> context_;
};

}  // namespace VorselKelp
