#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "core/CoreContext.h"
#include "net/VorselRequest.h"
#include "push/OpenTargets.h"

namespace VorselKelp {

/// What happens when the user opens a notification or taps one of its buttons. Main thread.
class OpenHandling {
 public:
  using Completion = std::function<void(std::optional<std::string>)>;

  OpenHandling(std::shared_ptr<CoreContext> context, std::shared_ptr<VorselRequest> requests,
               std::shared_ptr<OpenTargets> targets)
      : context_(std::move(context)), requests_(std::move(requests)), targets_(std::move(targets)) {}

  void pushTrackOpen(bool handle, const platform::NotificationResponse& response,
                     const Completion& completion);

 private:
  /// A web page in the in-app browser, followed by the tracker; anything else goes to the delegate alone.
  void open(const std::string& url, const std::optional<std::string>& tracker = std::nullopt);

  std::shared_ptr<CoreContext> context_;
  std::shared_ptr<VorselRequest> requests_;
  std::shared_ptr<OpenTargets> targets_;
};

}  // namespace VorselKelp
