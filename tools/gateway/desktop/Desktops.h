#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "VorselKelpPosix/SerialQueue.h"
#include "gateway/Notification.h"
#include "gateway/desktop/Authorizations.h"
#include "gateway/desktop/Sessions.h"

namespace gateway {

struct DesktopOptions {
  std::optional<Sender> sender{};  ///< none: push services are not told who sends
  std::string authorities{};       ///< the certificates to trust, a PEM file; empty: the system's
  /// Push services of this machine are posted to as well, also by http; no others but those of the internet
  /// ever are.
  bool loopback = false;
  double patience = 20;             ///< seconds for one notification
  std::size_t mostUnderWay = 2048;  ///< more are answered at once with 503
  std::size_t mostForOne = 1024;    ///< push service, that one that is slow leaves room for others; more: 429
};

/// Sends to desktops: each token is a push subscription, and the notification goes to its push service as an
/// encrypted message. It keeps nothing: what the push service answers is the answer.
///
/// Encrypts on a thread of its own. Destroying it answers what is under way with 503 Shutdown.
class Desktops final : public NextHop {
 public:
  explicit Desktops(DesktopOptions options);

  [[nodiscard]] bool takes(std::string_view device) const override;
  void deliver(Notification notification, Answered answered) override;

 private:
  void send(const Notification& notification, Answered answered);
  bool begin();
  bool beginFor(const std::string& origin);
  void end();
  void endFor(const std::string& origin);

  const DesktopOptions options_;
  std::optional<Authorizations> authorizations_;
  std::mutex mutex_;
  std::size_t underWay_ = 0;
  std::map<std::string, std::size_t> underWayFor_;  ///< by the push service's origin
  // Last, so that they end while the others are there.
  Sessions sessions_;
  VorselKelp::posix::SerialQueue encryption_;
};

}  // namespace gateway
