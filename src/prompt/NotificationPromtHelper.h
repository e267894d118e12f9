#pragma once

#include <memory>
#include <string>

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

 private:
  std::shared_ptr<StorageManager> storageManger;
};

}  // namespace VorselKelp
