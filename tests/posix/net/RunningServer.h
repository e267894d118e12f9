#pragma once

#include <httplib.h>

#include <string>
#include <thread>

namespace VorselKelp::testing_support {

/// Runs a server of httplib on a free port until it is destroyed.
class Running {
 public:
  explicit Running(httplib::Server& server) : server_(server) {
    // A connection kept open would hold up the end of the server.
    server_.set_keep_alive_max_count(1);
    port_ = server_.bind_to_any_port("127.0.0.1");
    thread_ = std::thread([&server] { server.listen_after_bind(); });
    while (!server_.is_running()) std::this_thread::yield();
  }
  ~Running() {
    server_.stop();
    thread_.join();
  }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;
  [[nodiscard]] std::string url(const std::string& path, const std::string& scheme = "http") const {
    return scheme + "://127.0.0.1:" + std::to_string(port_) + path;
  }

 private:
  httplib::Server& server_;
  int port_ = 0;
  std::thread thread_;
};

}  // namespace VorselKelp::testing_support
