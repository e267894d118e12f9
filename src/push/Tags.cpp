#include "push/Tags.h"

#include <vector>

namespace VorselKelp {

void replaceTagged(CoreContext& context, const std::optional<std::string>& tag,
                   const std::string& identifier) {
  if (!tag) return;
  auto& storage = context.storage;
  std::vector<std::string> replaced;
  storage.transact([&] {
    replaced = storage.listEntry(StorageKey::tags, *tag).value_or(std::vector<std::string>{});
    storage.setListEntry(StorageKey::tags, *tag, {identifier});
    storage.synchronize();
  });
  if (!replaced.empty()) context.services->notificationCenter->removeDeliveredNotifications(replaced);
}

}  // namespace VorselKelp
