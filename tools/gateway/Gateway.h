#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelp/Result.h"
#include "gateway/Notification.h"
#include "gateway/http2/Limits.h"
#include "gateway/provider/Checker.h"

namespace gateway {

/// One answered request.
struct Record {
  std::string identifier;
  std::string device;  ///< its name, see nameOf(); empty when the request was refused before
  std::string topic;
  std::size_t size = 0;  ///< bytes of the payload
  Answer answer;
  double seconds = 0;  ///< from the request's end to its answer
};

struct GatewayOptions {
  std::uint16_t port = 0;   ///< 0: any that is free
  bool everywhere = false;  ///< else on loopback alone
  std::string certificate;  ///< file in PEM, with those between it and its authority
  std::string key;          ///< file in PEM
  CheckOptions checks{};
  std::vector<ProviderKey> providerKeys{};
  std::vector<std::shared_ptr<NextHop>> hops{};  ///< the first that takes a token has it
  std::function<void(const Record&)> log{};      ///< any thread; empty: nobody
  Limits limits{};
};

/// The phone maker's provider protocol, over HTTP/2 and TLS. It keeps no notification: a provider has its
/// answer when the next hop has answered.
class Gateway {
 public:
  /// Listens from now on.
  static VorselKelp::Result<std::unique_ptr<Gateway>> make(GatewayOptions options);
  virtual ~Gateway() = default;

  [[nodiscard]] virtual std::uint16_t port() const = 0;
  /// Serves on this thread until stop() and the farewell after it: clients are told, requests under way are
  /// answered, later ones with 503 "Shutdown". Blocks SIGPIPE on this thread for good.
  virtual void run() = 0;
  /// Any thread, and signal handlers.
  virtual void stop() = 0;
};

}  // namespace gateway
