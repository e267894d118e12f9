#pragma once

#include <memory>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/URLSession.h"

namespace VorselKelp::posix {

struct URLSessionOptions {
  /// The shared library that does the work, loaded by the first request.
  std::string libraryName = "libcurl.so.4";
  /// The certificates to trust, a PEM file; when empty, the system's.
  std::string certificateFile;
  /// False: a redirect is an answer like any other.
  bool followRedirects = true;
};

/// A URL session with two threads, both started by the first request: one moves bytes, the other is the
/// delegate queue, so that a slow completion stalls no transfer. A session may be destroyed on its own
/// delegate queue. A process needs one session: connections and loaded certificates are shared within it.
///
/// Error codes are libcurl's own numbers, -999 for a cancelled request, and 0 when libcurl cannot be loaded.
[[nodiscard]] VORSELKELP_API std::shared_ptr<platform::URLSession> makeURLSession(
    URLSessionOptions options = {});

}  // namespace VorselKelp::posix
