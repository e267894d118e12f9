#pragma once

#include <sys/socket.h>

namespace gateway {

// What is known of an address without asking anybody. Any thread.

/// Whether it may be a server of the internet's: neither private nor local, no group's, none that is set
/// apart for documents, trials or tunnels, and no such address of IPv4 within one of IPv6.
bool isPublic(const sockaddr& address);

/// Whether it is this machine: 127.0.0.0/8 or ::1.
bool isLoopback(const sockaddr& address);

}  // namespace gateway
