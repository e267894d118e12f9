#include "gateway/http2/ListeningSocket.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

#include "VorselKelpPosix/FileIO.h"

namespace gateway {

using VorselKelp::Result;
using VorselKelp::posix::systemError;

namespace {

constexpr int waitingConnections = 1024;

bool listens(int socket, bool everywhere, std::uint16_t port) {
  const int on = 1;
  const int off = 0;
  ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  if (everywhere) {
    ::setsockopt(socket, IPPROTO_IPV6, IPV6_V6ONLY, &off, sizeof off);
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_port = htons(port);
    if (::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) return false;
  } else {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) return false;
  }
  return ::listen(socket, waitingConnections) == 0;
}

}  // namespace

Result<ListeningSocket> listenOn(std::uint16_t port, bool everywhere) {
  const auto name = "port " + std::to_string(port);
  const int socket = ::socket(everywhere ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (socket < 0) return systemError(name);
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  if (!listens(socket, everywhere, port) ||
      ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    auto error = systemError(name);
    ::close(socket);
    return error;
  }
  // Both families have the port in the same place.
  return ListeningSocket{socket, ntohs(reinterpret_cast<sockaddr_in*>(&address)->sin_port)};
}

std::string networkOf(const sockaddr_storage& address) {
  if (address.ss_family == AF_INET) {
    const auto& four = reinterpret_cast<const sockaddr_in&>(address);
    return {reinterpret_cast<const char*>(&four.sin_addr), sizeof four.sin_addr};
  }
  constexpr std::size_t network = 8;  // bytes
  const auto& six = reinterpret_cast<const sockaddr_in6&>(address);
  const auto* bytes = reinterpret_cast<const char*>(&six.sin6_addr);
  if (IN6_IS_ADDR_V4MAPPED(&six.sin6_addr)) return {bytes + 12, 4};
  return {bytes, network};
}

}  // namespace gateway
