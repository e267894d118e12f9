#include "push/Tags.h"

namespace VorselKelp {

void takeTag(CoreContext& context, const std::string& tag, const std::string& identifier,
             platform::FunctionRef<void()> store) {
  auto& storage = context.storage;
  auto& shown = *context.services->notificationCenter;
  const auto tagged = [&] {
    return storage.listEntry(StorageKey::tags, tag).value_or(StorageManager::TextList{});
  };
  const auto removed = tagged();
  if (!removed.empty()) shown.removeDeliveredNotifications(removed);
  StorageManager::TextList replaced;
  storage.transact([&] {
    store();
    replaced = tagged();
    storage.setListEntry(StorageKey::tags, tag, {identifier});
    storage.synchronize();
  });
  if (!replaced.empty() && replaced != removed) shown.removeDeliveredNotifications(replaced);
}

}  // namespace VorselKelp
