#include "push/OpenTargets.h"

#include "push/DeliveryPlan.h"

namespace VorselKelp {
void OpenTargets::store(const Conversion& conversion, const std::string& identifier) {
  auto& storage = context_->storage;
  storage.transact([&] {
    storage.setConversionTrackers(identifier, conversion.t.value_or(StorageManager::TextList{}));
    storage.synchronize();
    record(identifier, std::string(platform::defaultActionIdentifier), conversion.url);
  });
}

void OpenTargets::record(const std::string& identifier, const std::string& action, const std::string& url) {
  context_->storage.setDeepLink(identifier, action, storedUrl(url, action));
  context_->storage.synchronize();
}

OpenTargets::Taken OpenTargets::take(const std::string& identifier) {
  auto& storage = context_->storage;
  Taken taken;
  announce();
  storage.transact([&] {
    taken.trackers = storage.conversionTrackers(identifier);
    storage.removeConversionTrackers(identifier);
    taken.urls = storage.deepLinks(identifier);
    storage.removeDeepLinks(identifier);
  });
  return taken;
}

}  // namespace VorselKelp
