#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "gateway/http2/Limits.h"
#include "gateway/http2/Load.h"
#include "gateway/provider/Request.h"

typedef struct nghttp2_session nghttp2_session;

namespace gateway {

struct Response {
  using Fields = std::vector<std::pair<std::string, std::string>>;
  int status = 200;
  Fields fields{};  ///< names in lower case
  std::string body{};
};

/// HTTP/2 of one connection, a server's side, without its socket. One thread.
class Session {
 public:
  using Clock = std::chrono::steady_clock;

  class Events {
   public:
    virtual ~Events() = default;
    /// A whole request; or, of one whose body is too long, its beginning. answer() may be called at once.
    virtual void requested(std::int32_t stream, Request request, Load load) = 0;
    /// One that ran into a limit: what it is to be answered.
    [[nodiscard]] virtual Response refusal(std::int32_t stream, int status, const Request& request) = 0;
  };

  Session(Events& events, const Limits& limits, std::shared_ptr<Budget> budget);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// False when the peer does not speak the protocol; next() may still have something for it.
  [[nodiscard]] bool take(std::string_view bytes);
  /// What is to be sent, valid until the next call; empty: nothing now.
  [[nodiscard]] std::string_view next();
  /// Answers a request; nothing happens when its stream has gone.
  void answer(std::int32_t stream, const Response& response);

  /// Refuses the requests that have not come whole in time.
  void refuseLate(Clock::time_point now);
  /// Tells that the connection will end; requests are still taken.
  void announceEnd();
  /// Takes no more requests.
  void end();

  [[nodiscard]] bool idle() const { return streams_.empty(); }
  /// Nothing is to be read or sent any more.
  [[nodiscard]] bool ended() const;

 private:
  struct Stream;
  struct Callbacks;
  struct FreeSession {
    void operator()(nghttp2_session* session) const;
  };

  void refuse(Stream& stream, int status);
  void requestEnded(Stream& stream);
  void submit(Stream& stream, const Response& response);

  Events& events_;
  const Limits limits_;
  const std::shared_ptr<Budget> budget_;
  std::unordered_map<std::int32_t, std::unique_ptr<Stream>> streams_;
  std::unique_ptr<nghttp2_session, FreeSession> session_;
};

}  // namespace gateway
