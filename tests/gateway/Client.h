#pragma once

#include <openssl/ssl.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

typedef struct nghttp2_session nghttp2_session;

namespace gateway {

/// A provider's connection, which also does what no provider should. Waits 20 seconds at most for anything.
class Client {
 public:
  using Fields = std::vector<std::pair<std::string, std::string>>;
  struct Answer {
    int status = 0;
    Fields fields;
    std::string body;
    std::uint32_t error = 0;  ///< of the reset or the end of its stream
    bool closed = false;
    [[nodiscard]] std::string field(const std::string& name) const;
  };

  /// `protocols`: as ALPN has them on the wire; empty: none are offered.
  explicit Client(std::uint16_t port, const std::string& protocols = "\x02h2");
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  /// False when the server did not want to speak.
  [[nodiscard]] bool connected() const { return connected_; }
  /// Sends a request, without its end when `whole` is false.
  std::int32_t post(const std::string& path, const Fields& fields, const std::string& body,
                    bool whole = true);
  void reset(std::int32_t stream);
  /// Sends the bytes as they are.
  bool sendRaw(const std::string& bytes);
  /// Sends what waits to be sent.
  bool flush();
  /// Its answer, when it has come whole or the connection has ended.
  const Answer& wait(std::int32_t stream);
  /// Reads until the server closes; false after 20 seconds.
  bool waitForEnd();
  /// Whether the server said that it goes.
  [[nodiscard]] bool leaving() const { return leaving_; }
  [[nodiscard]] int pending() const { return static_cast<int>(bodies_.size()); }

 private:
  struct Callbacks;
  bool receive();

  int socket_ = -1;
  bool connected_ = false;
  bool ended_ = false;
  bool leaving_ = false;
  std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context_;
  std::unique_ptr<SSL, decltype(&SSL_free)> tls_;
  nghttp2_session* session_ = nullptr;
  std::map<std::int32_t, Answer> answers_;
  struct Body {
    std::string text;
    bool whole;
  };
  std::map<std::int32_t, Body> bodies_;
};

}  // namespace gateway
