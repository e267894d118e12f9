#include "net/OpenCounter.h"

#include <algorithm>
#include <limits>

namespace VorselKelp {

std::int64_t OpenCounter::take() const {
  constexpr std::int64_t most = 1000;
  std::int64_t taken = 0;
  const bool stored = context_->storage.transact([&] {
    const auto owed =
        std::max<std::int64_t>(context_->storage.integer(StorageKey::openCounter).value_or(0), 0);
    taken = std::min(owed, most);
    context_->storage.set(StorageKey::openCounter, owed - taken);
    context_->storage.synchronize();
  });
  // Where the disk has refused that, they are owed still, and would be sent again with every open.
  return stored ? taken : 0;
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
