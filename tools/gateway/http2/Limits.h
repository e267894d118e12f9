#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace gateway {

/// What one client may cost, and all of them together.
struct Limits {
  std::size_t connections = 16'384;
  std::size_t connectionsOfOneAddress = 1'024;  ///< of one network of 64 bits with IPv6
  std::uint32_t streams = 256;  ///< at once in a connection; a well-behaved client keeps to it
  /// Of streams, by their client. Some clients reset every stream that was answered; what is under way for
  /// the others stays within `held`.
  std::uint64_t resets = 50'000;
  std::uint64_t resetsEachSecond = 1'000;  ///< beyond those
  std::size_t head =
      std::size_t{16} << 10;  ///< bytes of a request's fields with their names, and 32 for each
  std::size_t held = std::size_t{256}
                     << 20;  ///< bytes of all requests that are not whole or not answered yet
  std::chrono::seconds handshake{10};
  std::chrono::seconds request{20};   ///< from its first byte to its last
  std::chrono::seconds reading{20};   ///< until a client takes anything of what waits for it
  std::chrono::seconds idle{600};     ///< of a connection without a request
  std::chrono::seconds farewell{10};  ///< for requests under way when the gateway ends
};

}  // namespace gateway
