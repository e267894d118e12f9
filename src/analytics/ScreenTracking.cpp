#include "analytics/ScreenTracking.h"

#include <limits>

namespace VorselKelp {

void ScreenTracking::exchange() {
  const std::weak_ptr<platform::ScreenObserver> self = weak_from_this();
  if (hooked_) {
    context_->services->application->removeObserver(self);
  } else {
    context_->services->application->addObserver(self);
  }
  hooked_ = !hooked_;
}

void ScreenTracking::screenDidAppear() {
  auto& storage = context_->storage;
  storage.transact([&] {
    const auto visited = storage.integer(StorageKey::visitedCount).value_or(0);
    if (visited < std::numeric_limits<std::int64_t>::max())
      storage.set(StorageKey::visitedCount, visited + 1);
  });
}

}  // namespace VorselKelp
