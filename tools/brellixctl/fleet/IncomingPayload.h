#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include "VorselKelp/RemoteKind.h"
#include "brellixctl/fleet/FleetPayload.h"

namespace brellixctl {

/// A payload from a publisher's server, and what a phone makes of it.
struct IncomingPayload {
  VorselKelp::RemoteKind kind = VorselKelp::RemoteKind::asItCame;
  /// What is shown when no extension changes it, and the user information in any case.
  VorselKelp::platform::NotificationContent unchanged;
  /// Only where the extension changes it. One whose extension would stop or never answer is shown as it came.
  std::optional<FleetPayload> campaign;
};

/// The payloads of a campaign, which are alike or differ from device to device.
class IncomingPayloads {
 public:
  std::shared_ptr<const IncomingPayload> read(const std::string& bytes);
  /// As kindOf() of FleetPayload.h, for what the latest payloads ask for; empty: something else. Any thread.
  [[nodiscard]] std::string kindOf(const std::string& url) const;

 private:
  void remember(const std::string& bytes, const std::shared_ptr<const IncomingPayload>& payload);

  std::unordered_map<std::string, std::shared_ptr<const IncomingPayload>> payloads_;
  mutable std::mutex mutex_;
  std::unordered_map<std::string, std::string> kinds_;
};

}  // namespace brellixctl
