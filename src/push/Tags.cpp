#include "push/Tags.h"

namespace VorselKelp {

std::vector<std::string> removeTagged(CoreContext& context, const std::string& tag) {
  auto tagged = context.storage.listEntry(StorageKey::tags, tag).value_or(std::vector<std::string>{});
  if (!tagged.empty()) context.services->notificationCenter->removeDeliveredNotifications(tagged);
  return tagged;
}

std::vector<std::string> takeOverTag(CoreContext& context, const std::string& tag,
                                     const std::string& identifier) {
  auto& storage = context.storage;
  std::vector<std::string> earlier;
  storage.transact([&] {
    earlier = storage.listEntry(StorageKey::tags, tag).value_or(std::vector<std::string>{});
    storage.setListEntry(StorageKey::tags, tag, {identifier});
    storage.synchronize();
  });
  return earlier;
}

}  // namespace VorselKelp
