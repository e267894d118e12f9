#pragma once

#include <netinet/in.h>

#include <cstdint>
#include <string>

#include "VorselKelp/Result.h"

namespace gateway {

struct ListeningSocket {
  int descriptor = -1;  ///< the caller's
  std::uint16_t port = 0;
};

/// Of both versions of IP where it is open to everybody, else 127.0.0.1 and no other. Port 0 is any.
VorselKelp::Result<ListeningSocket> listenOn(std::uint16_t port, bool everywhere);

/// What one client can be taken for: its address, of IPv6 the 64 bits of its network.
std::string networkOf(const sockaddr_storage& address);

}  // namespace gateway
