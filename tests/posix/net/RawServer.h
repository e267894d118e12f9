#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <list>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace VorselKelp::testing_support {

/// One accepted connection, for servers that misbehave.
class RawConnection {
 public:
  explicit RawConnection(int socket) : socket_(socket) {}

  /// The head of one request; empty when the client is gone.
  std::string readHead() {
    std::string head;
    char byte;
    while (!head.ends_with("\r\n\r\n")) {
      if (::recv(socket_, &byte, 1, 0) != 1) return {};
      head += byte;
    }
    return head;
  }
  /// False when the client is gone.
  bool write(std::string_view bytes) {
    while (!bytes.empty()) {
      const auto sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
  }
  /// Keeps silent until the client leaves.
  void stall() {
    char byte;
    while (::recv(socket_, &byte, 1, 0) == 1) {
    }
  }
  /// Ends the connection with a reset instead of a farewell.
  void reset() {
    sockaddr unspecified{};
    unspecified.sa_family = AF_UNSPEC;
    ::connect(socket_, &unspecified, sizeof unspecified);
  }
  void end() { ::shutdown(socket_, SHUT_RDWR); }

 private:
  int socket_;
};

/// Accepts on a free port of 127.0.0.1 and runs `handler` for each connection on a thread of its own.
class RawServer {
 public:
  explicit RawServer(std::function<void(RawConnection&)> handler) : handler_(std::move(handler)) {
    socket_ = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ::bind(socket_, reinterpret_cast<sockaddr*>(&address), size);
    ::listen(socket_, 1024);
    ::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
    acceptor_ = std::thread([this] { accept(); });
  }
  ~RawServer() {
    ::shutdown(socket_, SHUT_RDWR);
    acceptor_.join();
    ::close(socket_);
    for (auto& [socket, thread] : served_) {
      ::shutdown(socket, SHUT_RDWR);
      thread.join();
      ::close(socket);
    }
  }
  RawServer(const RawServer&) = delete;
  RawServer& operator=(const RawServer&) = delete;

  [[nodiscard]] std::string url(const std::string& path = "/") const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
  }
  [[nodiscard]] int connections() const { return connections_; }

 private:
  void accept() {
    for (;;) {
      const int socket = ::accept(socket_, nullptr, nullptr);
      if (socket < 0) return;
      ++connections_;
      served_.emplace_back(socket, std::thread([this, socket] {
                             RawConnection connection(socket);
                             handler_(connection);
                             connection.end();
                           }));
    }
  }

  std::function<void(RawConnection&)> handler_;
  int socket_ = -1;
  int port_ = 0;
  std::atomic<int> connections_ = 0;
  std::list<std::pair<int, std::thread>> served_;
  std::thread acceptor_;
};

}  // namespace VorselKelp::testing_support
