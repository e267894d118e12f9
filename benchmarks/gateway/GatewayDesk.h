#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace VorselKelp::benchmarks {

/// A server of HTTP/2 on this machine, which is ended with the object. What fails ends the benchmark.
class Server {
 public:
  explicit Server(const std::vector<std::string>& command);
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  /// The next line that it prints.
  [[nodiscard]] std::string line() const;
  [[nodiscard]] double peakMegabytes() const;

 private:
  pid_t process_ = -1;
  int output_ = -1;
};

/// The gateway and, beside it, `nghttpd` with an empty file for an answer; both asked the same by `h2load`.
class GatewayDesk {
 public:
  GatewayDesk();
  ~GatewayDesk();
  GatewayDesk(const GatewayDesk&) = delete;
  GatewayDesk& operator=(const GatewayDesk&) = delete;

  struct Run {
    double value;
    double peakMegabytes;  ///< the server's
  };
  /// Microseconds for each request, of 10 connections of 100 streams.
  Run throughput(bool floor);
  /// Microseconds that one request of a hundred takes longer than, at 10,000 a second.
  Run slowest(bool floor);
  /// 1,000 connections of 100 streams.
  Run crowd(bool floor);
  /// Microseconds for each of 10,000 notifications, one a device, from the first request until the last one
  /// is on its device's screen: what `brellixctl fleet --gateway` tells of it.
  double fleet();

 private:
  Run load(bool floor, const std::vector<std::string>& how);
  [[nodiscard]] double slowestLogged() const;
  [[nodiscard]] std::string file(const char* name) const { return folder_ + "/" + name; }

  std::string folder_;
};

}  // namespace VorselKelp::benchmarks
