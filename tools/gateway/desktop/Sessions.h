#pragma once

#include <atomic>
#include <cstddef>
#include <list>
#include <memory>

#include "VorselKelp/platform/URLSession.h"
#include "VorselKelpPosix/CurlURLSession.h"

namespace gateway {

/// Posts over connections that are kept, and replaced before they have had too many requests: libcurl, as
/// Debian 12 has it, ends each stream of HTTP/2 with a reset, and servers that guard themselves against those
/// end a connection with a thousand of them, be they behind their answers.
///
/// One thread at a time; completions come as a session's do.
class Sessions {
 public:
  explicit Sessions(VorselKelp::posix::URLSessionOptions options) : options_(std::move(options)) {}

  void send(VorselKelp::platform::URLRequest request,
            VorselKelp::platform::URLSession::Completion completion);

 private:
  struct Session {
    std::size_t begun = 0;
    std::atomic<std::size_t> underWay = 0;
    std::shared_ptr<VorselKelp::platform::URLSession> requests{};  ///< last: its end counts too
  };

  void renew();

  const VorselKelp::posix::URLSessionOptions options_;
  std::list<Session> sessions_;  ///< the last one takes requests, those before it wait for their answers
};

}  // namespace gateway
