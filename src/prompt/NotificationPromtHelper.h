#pragma once

#include <memory>
#include <string>

#include "VorselKelp/Result.h"
#include "core/StorageManager.h"

namespace VorselKelp {

/// What the permission page needs of the store.
class NotificationPromtHelper {
 public:
  explicit NotificationPromtHelper(std::shared_ptr<StorageManager> storage)
      : storageManger(std::move(storage)) {}

  /// The stored remote configuration, made fit for the inside of a script element: without its backslashes,
  /// and with every "<" written as an escape, so that no text in it ends the element or opens a comment.
  /// Empty when none is stored.
  [[nodiscard]] std::string configurationScript() const;

  /// An error when a configuration is stored that no script could read, for it is no JSON once its
  /// backslashes are gone. The page would be dead then, and can't be seen.
  [[nodiscard]] Status check() const;

 private:
  /// Without its backslashes.
  [[nodiscard]] std::string storedConfiguration() const;

  std::shared_ptr<StorageManager> storageManger;
};

}  // namespace VorselKelp
