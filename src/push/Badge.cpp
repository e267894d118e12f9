#include "push/Badge.h"

#include <limits>
#include <optional>

#include "base/FatalError.h"

namespace VorselKelp {

void Badge::increase(platform::NotificationContent* content) {
  auto& storage = context_->storage;
  if (!storage.flag(StorageKey::push)) return;
  std::int64_t count = 1;
  storage.transact([&] {
    if (const auto stored = storage.integer(StorageKey::badge)) {
      if (*stored == std::numeric_limits<std::int64_t>::max()) fatalError("the badge count overflows");
      count = *stored + 1;
    }
    storage.set(StorageKey::badge, count);
    storage.synchronize();
  });
  show(count, content);
}

void Badge::decrease(platform::NotificationContent* content) {
  auto& storage = context_->storage;
  if (!storage.flag(StorageKey::push)) return;
  std::optional<std::int64_t> count;
  storage.transact([&] {
    count = storage.integer(StorageKey::badge);
    if (!count || *count == std::numeric_limits<std::int64_t>::min()) return;
    count = *count - 1;
    storage.set(StorageKey::badge, *count);
    storage.synchronize();
  });
  if (count) show(*count, content);
}

void Badge::set(std::int64_t value) {
  auto& storage = context_->storage;
  if (!storage.flag(StorageKey::push)) return;
  show(value, nullptr);
  storage.set(StorageKey::badge, value);
  storage.synchronize();
}

void Badge::show(std::int64_t value, platform::NotificationContent* content) {
  if (content) {
    content->badge = value;
  } else {
    context_->services->application->setBadge(value);
  }
}

}  // namespace VorselKelp
