#include "push/OpenHandling.h"

#include <utility>

#include "push/AdFollowUp.h"
#include "push/LinkTarget.h"

namespace VorselKelp {

void OpenHandling::pushTrackOpen(bool handle, const platform::NotificationResponse& response,
                                 const Completion& completion) {
  if (!context_->storage.flag(StorageKey::push)) return;
  const auto target = targets_->take(response.request.identifier);
  if (target.trackers) {
    for (const std::string& tracker : *target.trackers) requests_->fireTracker(tracker);
  }
  if (target.urls) {
    const auto found = target.urls->find(response.actionIdentifier);
    if (found == target.urls->end()) {
      completion(std::nullopt);
    } else if (handle) {
      open(found->second);
    } else {
      completion(found->second);
    }
  }
  if (adFollows(response.actionIdentifier)) followUpAd(*context_, *requests_);
}

void OpenHandling::open(const std::string& url, const std::optional<std::string>& tracker) {
  auto target = linkTarget(url);
  if (target.kind == LinkTarget::Kind::nothing) return;
  if (target.kind == LinkTarget::Kind::deepLink) {
    if (const auto delegate = context_->state.delegate()) delegate->handleURL(target.url);
    return;
  }
  context_->services->mainQueue->async(
      [browser = context_->services->inAppBrowser, page = std::move(target.url)] { browser->present(page); });
  if (tracker) requests_->fireTracker(*tracker);
}

}  // namespace VorselKelp
