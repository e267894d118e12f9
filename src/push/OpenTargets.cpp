#include "push/OpenTargets.h"

#include <string_view>

#include "base/Text.h"

namespace VorselKelp {
namespace {

constexpr std::string_view actionPlaceholder = "${VA_BACID}";

}  // namespace

void OpenTargets::store(const Conversion& conversion, const std::string& identifier) {
  auto& storage = context_->storage;
  storage.transact([&] {
    storage.setConversionTrackers(identifier, conversion.t.value_or(StorageManager::TextList{}));
    storage.synchronize();
    record(identifier, std::string(platform::defaultActionIdentifier), conversion.url);
  });
}

void OpenTargets::record(const std::string& identifier, const std::string& action, const std::string& url) {
  const std::string_view button =
      action == platform::defaultActionIdentifier ? std::string_view("0") : action;
  context_->storage.setDeepLink(identifier, action, replaceAll(url, actionPlaceholder, button));
  context_->storage.synchronize();
}

OpenTargets::Taken OpenTargets::take(const std::string& identifier) {
  auto& storage = context_->storage;
  Taken taken;
  storage.announceTrackerReading();
  storage.transact([&] {
    taken.trackers = storage.announcedTrackers(identifier);
    storage.removeConversionTrackers(identifier);
    taken.urls = storage.deepLinks(identifier);
    storage.removeDeepLinks(identifier);
  });
  return taken;
}

}  // namespace VorselKelp
