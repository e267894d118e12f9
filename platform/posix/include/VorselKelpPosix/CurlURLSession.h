#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/URLSession.h"

struct sockaddr;

namespace VorselKelp::posix {

struct URLSessionOptions {
  /// The shared library that does the work, loaded by the first request.
  std::string libraryName = "libcurl.so.4";
  /// The certificates to trust, a PEM file; when empty, the system's.
  std::string certificateFile;
  /// False: a redirect is an answer like any other.
  bool followRedirects = true;
  /// Which addresses may be connected to; asked behind the resolver, for each that is about to be, on the
  /// session's own thread. No proxy is used then, which would be the one that connects. Empty: all.
  std::function<bool(const sockaddr& address)> mayConnect{};
  /// Seconds that a request may take as a whole, once it was begun; absent: for as long as bytes come.
  std::optional<double> longestRequest{};
  /// Requests to one server share as many connections at most, side by side on each where it speaks HTTP/2;
  /// 0: a request waits for no other's connection.
  unsigned connectionsToServer = 0;
  /// What more are sent wait. Each may need a connection of its own, and with it a file descriptor, of which
  /// a process has 1024 as a rule.
  std::size_t requestsAtOnce = 256;
};

/// The error's code where `mayConnect` has refused all of the server's addresses.
inline constexpr int addressRefused = -998;

/// A URL session with two threads, both started by the first request: one moves bytes, the other is the
/// delegate queue, so that a slow completion stalls no transfer. A session may be destroyed on its own
/// delegate queue. A process needs one session: connections and loaded certificates are shared within it.
///
/// Error codes are libcurl's own numbers, -999 for a cancelled request, `addressRefused`, and 0 when libcurl
/// cannot be loaded.
[[nodiscard]] VORSELKELP_API std::shared_ptr<platform::URLSession> makeURLSession(
    URLSessionOptions options = {});

}  // namespace VorselKelp::posix
