#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "VorselKelp/platform/URLSession.h"

namespace brellixctl {

/// Keeps a fleet's requests on one server: those to any other go to that server instead, with path and query
/// as they are. Thread-safe.
class ServerFence final : public VorselKelp::platform::URLSession {
 public:
  /// Requests that were turned round, by the server that they were meant for.
  using Counts = std::map<std::string, std::size_t>;

  /// `server`: scheme, host and port.
  ServerFence(std::shared_ptr<URLSession> session, std::string server)
      : session_(std::move(session)), server_(std::move(server)) {}

  void send(VorselKelp::platform::URLRequest request, Completion completion) override;
  [[nodiscard]] Counts turned() const;

 private:
  const std::shared_ptr<URLSession> session_;
  const std::string server_;
  mutable std::mutex mutex_;
  Counts turned_;
};

}  // namespace brellixctl
