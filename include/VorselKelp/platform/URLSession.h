#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/UniqueFunction.h"

namespace VorselKelp::platform {

struct HTTPHeader {
  std::string name;
  std::string value;
  friend bool operator==(const HTTPHeader&, const HTTPHeader&) = default;
};

/// Takes a body piece by piece; each piece holds for the call alone. An error ends the request, which is
/// answered with it.
using BodyConsumer = std::function<Status(std::string_view piece)>;

/// One HTTP request, whole. Sizes are in bytes of the body as it comes over the wire and, when the server
/// compressed it, also of the body as it comes out; times are in seconds.
struct URLRequest {
  std::string method = "GET";
  /// Absolute, "http" or "https". Anything else is answered with an error; no other scheme is ever opened.
  std::string url;
  std::vector<HTTPHeader> headers;
  std::string body;
  /// Seconds without a single byte in either direction after which the request fails, connecting included.
  /// Where both are set, the shorter one holds.
  double timeout = 60;
  std::optional<double> sessionTimeout;
  /// A response whose body grows past this is a transport error.
  std::size_t responseLimit = std::size_t{1} << 20;
  /// The caller does not want the body: it is read, so that the connection can be used again, and dropped.
  /// Where it grows past the limit the connection is closed. The response stands even so, and also where the
  /// body is cut off or damaged: its head is all that was wanted.
  bool discardBody = false;
  /// Where set and the body wanted, the body goes there as it comes instead of into memory: in order, on a
  /// thread of the session's own, where all other requests wait for the consumer. Of responses on the way to
  /// the final one, redirects above all, nothing is given; the status is the caller's to look at afterwards.
  /// A request that ends with an error may have given the beginning of a body. The session has let go of the
  /// consumer when the completion runs.
  BodyConsumer bodyConsumer;
};

struct HTTPURLResponse {
  int statusCode = 0;
  std::vector<HTTPHeader> headers;
  /// Where the body came from, after redirects.
  std::string url;
  /// A name for the body as a file: from "Content-Disposition", else the URL's last path component. As
  /// received: it may hold anything a hostile server likes. Absent when neither gives one.
  std::optional<std::string> suggestedFilename;
};

/// How a request ended: a response and no error, or an error and nothing else.
struct URLResult {
  std::optional<HTTPURLResponse> response;
  /// Absent when the response can have none (204, 304, or `discardBody`); otherwise present, possibly empty,
  /// and always empty when there was a `bodyConsumer`.
  std::optional<std::string> body;
  std::optional<Error> error;
};

/// Executes HTTP requests, one answer each. Retry, counters and endpoints are the caller's.
///
/// Redirects are followed, at most five, to "http" and "https" only; a circle, a sixth one or another scheme
/// is an error. Certificates are verified. No cookies are kept and no credentials sent.
class URLSession {
 public:
  using Completion = UniqueFunction<void(URLResult)>;

  virtual ~URLSession() = default;

  /// Starts the request and returns at once. `completion` runs exactly once, on the session's delegate queue:
  /// a serial queue off the main thread, never inside this call. Requests run side by side; a stalled one
  /// delays no other. When the session is destroyed, requests still running are answered with an error
  /// ("cancelled", code -999) on the destroying thread or the delegate queue, before the destructor returns.
  virtual void send(URLRequest request, Completion completion) = 0;
};

}  // namespace VorselKelp::platform
