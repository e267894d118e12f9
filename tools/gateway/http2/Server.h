#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "VorselKelp/Result.h"
#include "gateway/http2/Connection.h"
#include "gateway/http2/Limits.h"
#include "gateway/http2/Loop.h"
#include "gateway/http2/Tls.h"

namespace gateway {

/// A listening socket and all who came to it. On the loop's thread, but for what says otherwise.
class Server final : public Loop::Source {
 public:
  using Respond = VorselKelp::platform::UniqueFunction<void(Response)>;

  class Requests {
   public:
    virtual ~Requests() = default;
    /// `respond` may be called on any thread, and at once; what nobody waits for any more goes nowhere.
    virtual void requested(Request request, ShownTokens& shown, Respond respond) = 0;
    /// The answer to what ran into a limit, with that status.
    [[nodiscard]] virtual Response refusal(int status, const Request& request) = 0;
  };

  struct Options {
    std::uint16_t port = 0;   ///< 0: any that is free
    bool everywhere = false;  ///< else on loopback alone
    Limits limits{};
  };

  /// Requests outlive the server.
  static VorselKelp::Result<std::unique_ptr<Server>> listen(std::shared_ptr<Loop> loop, Tls tls,
                                                            Requests& requests, const Options& options);
  Server(std::shared_ptr<Loop> loop, Tls tls, Requests& requests, const Limits& limits, int socket,
         std::uint16_t port);
  ~Server() override;

  [[nodiscard]] std::uint16_t port() const { return port_; }

  void ready(std::uint32_t events) override;
  /// After each round of the loop, and about once a second.
  void flush();
  void look();
  /// Takes nobody any more, and has all who are there leave.
  void leave();
  [[nodiscard]] bool empty() const { return clients_->all.empty(); }

 private:
  class Client;
  /// Those who are there, by a number of their own, and who of them has something to be sent.
  struct Clients {
    std::unordered_map<std::uint64_t, std::unique_ptr<Client>> all;
    std::vector<std::uint64_t> toFlush;
  };

  /// From now on, should it have paused.
  void takeOthers();
  void take(int socket, std::string network);
  void forget(std::uint64_t number);

  const std::shared_ptr<Loop> loop_;
  const Tls tls_;
  Requests& requests_;
  const Limits limits_;
  const std::shared_ptr<Budget> budget_;
  std::optional<VorselKelp::posix::Descriptor> socket_;
  const std::uint16_t port_;
  std::map<std::string, std::size_t> networks_;
  std::uint64_t count_ = 0;
  bool leaving_ = false;
  /// Answers of other threads find their client by it, or find that it has gone.
  const std::shared_ptr<Clients> clients_;
};

}  // namespace gateway
