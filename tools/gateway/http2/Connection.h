#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelpPosix/Descriptor.h"
#include "gateway/http2/Loop.h"
#include "gateway/http2/Session.h"
#include "gateway/http2/Tls.h"
#include "gateway/provider/ProviderTokens.h"

namespace gateway {

/// One client: its socket, TLS and HTTP/2. On the loop's thread.
class Connection final : public Loop::Source {
 public:
  using Clock = Loop::Clock;

  class Owner : public Session::Events {
   public:
    /// Nothing more will come or be sent. The connection is still in use when this is called.
    virtual void closing() = 0;
  };

  struct Parts {
    Loop& loop;
    const Tls& tls;
    const Limits& limits;
    std::shared_ptr<Budget> budget;
    Owner& owner;
  };

  Connection(const Parts& parts, int socket);
  ~Connection() override;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  void ready(std::uint32_t events) override;
  void answer(std::int32_t stream, const Response& response);
  /// Sends what waits to be sent. After each round of the loop.
  void flush();
  /// About once a second: ends what takes too long.
  void look(Clock::time_point now);
  /// Tells the client, and leaves when it has no request under way and has had the time to hear of it.
  void leave();

  [[nodiscard]] bool closed() const { return closed_; }
  [[nodiscard]] ShownTokens& shownTokens() { return shownTokens_; }

 private:
  enum class Stage { handshake, serving };

  void handshake();
  void read();
  [[nodiscard]] bool write(std::string_view bytes);
  void expect(std::uint32_t events);
  void close();
  /// True when nothing more can be done now; closes where nothing ever can.
  void stuck(int result);

  Loop& loop_;
  Owner& owner_;
  const Limits limits_;
  const VorselKelp::posix::Descriptor socket_;
  Tls::Connection tls_;
  Session session_;
  ShownTokens shownTokens_;
  Stage stage_ = Stage::handshake;
  std::string unsent_;
  std::uint32_t expected_ = 0;
  Clock::time_point moved_ = Clock::now();  ///< when the handshake or the sending went on, or a request came
  std::optional<Clock::time_point> leaving_;
  bool ended_ = false;
  bool closed_ = false;
};

}  // namespace gateway
