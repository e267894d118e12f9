#include "push/OpenHandling.h"

#include "base/Url.h"
#include "push/AdFollowUp.h"

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
  if (response.actionIdentifier == "yes" || response.actionIdentifier == platform::defaultActionIdentifier)
    followUpAd(*context_, *requests_);
}

void OpenHandling::open(const std::string& url, const std::optional<std::string>& tracker) {
  const auto parsed = parseUrl(url);
  if (!parsed) return;
  if (parsed->scheme != "https" && parsed->scheme != "http") {
    if (const auto delegate = context_->state.delegate()) delegate->handleURL(parsed->text);
    return;
  }
  if (parsed->isWeb())
    context_->services->mainQueue->async(
        [browser = context_->services->inAppBrowser, page = parsed->text] { browser->present(page); });
  if (tracker) requests_->fireTracker(*tracker);
}

}  // namespace VorselKelp
