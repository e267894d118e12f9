#include "gateway/http2/Server.h"

#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "gateway/http2/ListeningSocket.h"

namespace gateway {

using VorselKelp::Result;

namespace {

constexpr int clientsAtOnce = 64;  // others wait meanwhile

}  // namespace

class Server::Client final : public Connection::Owner {
 public:
  Client(Server& server, std::uint64_t number, int socket, std::string network)
      : server_(server),
        number_(number),
        network_(std::move(network)),
        connection_({*server.loop_, server.tls_, server.limits_, server.budget_, *this}, socket) {}

  void requested(std::int32_t stream, Request request, Load load) override {
    server_.requests_.requested(
        std::move(request), connection_.shownTokens(),
        [loop = server_.loop_, clients = std::weak_ptr(server_.clients_), number = number_, stream,
         load = std::move(load)](Response response) mutable {
          if (loop->isOwnThread()) return hand(clients, number, stream, response);
          loop->post([clients = std::move(clients), number, stream, response = std::move(response),
                      load = std::move(load)] { hand(clients, number, stream, response); });
        });
  }
  [[nodiscard]] Response refusal(std::int32_t, int status, const Request& request) override {
    return server_.requests_.refusal(status, request);
  }

  void closing() override { server_.clients_->toFlush.push_back(number_); }
  [[nodiscard]] Connection& connection() { return connection_; }
  [[nodiscard]] const std::string& network() const { return network_; }

 private:
  static void hand(const std::weak_ptr<Clients>& clients, std::uint64_t number, std::int32_t stream,
                   const Response& response) {
    const auto there = clients.lock();
    if (!there) return;
    const auto found = there->all.find(number);
    if (found == there->all.end()) return;
    found->second->connection_.answer(stream, response);
    there->toFlush.push_back(number);
  }

  Server& server_;
  const std::uint64_t number_;
  const std::string network_;
  Connection connection_;
};

Result<std::unique_ptr<Server>> Server::listen(std::shared_ptr<Loop> loop, Tls tls, Requests& requests,
                                               const Options& options) {
  const auto socket = listenOn(options.port, options.everywhere);
  if (!socket) return socket.error();
  auto server = std::make_unique<Server>(loop, std::move(tls), requests, options.limits, socket->descriptor,
                                         socket->port);
  if (const auto status = loop->watch(socket->descriptor, EPOLLIN, *server); !status) return status.error();
  return server;
}

Server::Server(std::shared_ptr<Loop> loop, Tls tls, Requests& requests, const Limits& limits, int socket,
               std::uint16_t port)
    : loop_(std::move(loop)),
      tls_(std::move(tls)),
      requests_(requests),
      limits_(limits),
      budget_(std::make_shared<Budget>(limits.held)),
      socket_(std::in_place, socket),
      port_(port),
      clients_(std::make_shared<Clients>()) {}

Server::~Server() {
  if (socket_) loop_->forget(socket_->number(), *this);
  clients_->all.clear();
}

void Server::ready(std::uint32_t) {
  for (int i = 0; i < clientsAtOnce; ++i) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    const int socket = ::accept4(socket_->number(), reinterpret_cast<sockaddr*>(&address), &size,
                                 SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (socket < 0) {
      // Without descriptors nobody can be taken until somebody goes; look() tries again in any case.
      if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM)
        (void)loop_->watch(socket_->number(), 0, *this);
      return;
    }
    take(socket, networkOf(address));
  }
}

void Server::takeOthers() {
  if (socket_) (void)loop_->watch(socket_->number(), EPOLLIN, *this);
}

void Server::take(int socket, std::string network) {
  auto& there = networks_[network];
  if (there >= limits_.connectionsOfOneAddress || clients_->all.size() >= limits_.connections) {
    if (there == 0) networks_.erase(network);
    ::close(socket);
    return;
  }
  ++there;
  // Answers are small, and many.
  const int on = 1;
  ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  const auto number = ++count_;
  clients_->all.emplace(number, std::make_unique<Client>(*this, number, socket, std::move(network)));
}

void Server::flush() {
  while (!clients_->toFlush.empty()) {
    for (const auto number : std::exchange(clients_->toFlush, {})) {
      const auto found = clients_->all.find(number);
      if (found == clients_->all.end()) continue;
      found->second->connection().flush();
      if (found->second->connection().closed()) forget(number);
    }
  }
}

void Server::look() {
  const auto now = Loop::Clock::now();
  takeOthers();
  for (const auto& [number, client] : clients_->all) {
    if (leaving_) client->connection().leave();
    client->connection().look(now);
    clients_->toFlush.push_back(number);
  }
}

void Server::forget(std::uint64_t number) {
  const auto client = clients_->all.find(number);
  const auto network = networks_.find(client->second->network());
  if (--network->second == 0) networks_.erase(network);
  clients_->all.erase(client);
  takeOthers();
}

void Server::leave() {
  leaving_ = true;
  if (!socket_) return;
  loop_->forget(socket_->number(), *this);
  socket_.reset();
}

}  // namespace gateway
