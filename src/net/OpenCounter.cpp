#include "net/OpenCounter.h"

#include <limits>

namespace VorselKelp {

std::int64_t OpenCounter::take() const {
  std::int64_t owed = 0;
  context_->storage.transact([&] {
    owed = context_->storage.integer(StorageKey::openCounter).value_or(0);
    context_->storage.set(StorageKey::openCounter, std::int64_t{0});
    context_->storage.synchronize();
  });
  return owed;
}

void OpenCounter::owe() const {
  context_->storage.transact([&] {
    const auto owed = context_->storage.integer(StorageKey::openCounter).value_or(0);
    if (owed == std::numeric_limits<std::int64_t>::max()) return;
    context_->storage.set(StorageKey::openCounter, owed + 1);
    context_->storage.synchronize();
  });
}

void OpenCounter::acknowledge() const {
  context_->storage.transact([&] {
    const auto owed = context_->storage.integer(StorageKey::openCounter);
    if (!owed || *owed < 2) return;
    context_->storage.set(StorageKey::openCounter, *owed - 1);
    context_->storage.synchronize();
  });
}

}  // namespace VorselKelp
