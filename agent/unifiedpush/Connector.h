#pragma once

#include <functional>
#include <string>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/UniqueFunction.h"
#include "bus/Bus.h"

namespace VorselKelp::agent {

/// What distributors call, in both versions of their interface. Who calls may be anybody: `sender` is the
/// caller's connection.
struct ConnectorEvents {
  /// To be called once: no error acknowledges the message.
  using Acknowledge = platform::UniqueFunction<void(Status)>;

  std::function<void(const std::string& sender, const std::string& token, std::string bytes,
                     const std::string& id, Acknowledge)>
      message;
  /// To be called once, when what was said can't be lost any more.
  using Heard = platform::UniqueFunction<void()>;
  /// `endpoint` is empty while the distributor changes its provider.
  std::function<void(const std::string& sender, const std::string& token, const std::string& endpoint, Heard)>
      newEndpoint;
  /// `token` may be empty.
  std::function<void(const std::string& sender, const std::string& token, Heard)> unregistered;
};

/// Serves the connector's object. Main thread.
Status serveConnector(Bus& bus, ConnectorEvents events);

}  // namespace VorselKelp::agent
