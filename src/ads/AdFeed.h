#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "ads/AdRecords.h"
#include "core/CoreContext.h"
#include "net/VorselRequest.h"

namespace VorselKelp {

/// Fetches ads from the publisher's feed. Any thread; answers come on the session's delegate queue.
class AdFeed {
 public:
  using Completion = std::function<void(std::optional<AdexObject>, std::optional<Error>)>;

  AdFeed(std::shared_ptr<CoreContext> context, std::shared_ptr<VorselRequest> requests)
      : context_(std::move(context)), requests_(std::move(requests)) {}

  /// Asks for an ad of the screen's size, in whole points, for the slot. An application without a tracking id
  /// sends nothing; a status other than 200 answers nothing: the caller waits on.
  void request(int width, int height, const std::string& slot, Completion completion);

  /// Requests the first impression tracker of an ad that has come.
  void countImpression(const AdexObject& ad);

  /// Requests a tracker with the value in its place; nothing when either is absent.
  void fireTemplate(const std::optional<std::string>& trackerTemplate,
                    const std::optional<std::string>& value);

 private:
  std::shared_ptr<CoreContext> context_;
  std::shared_ptr<VorselRequest> requests_;
};

}  // namespace VorselKelp
