#pragma once

#include <memory>
#include <string>

#include "VorselKelp/Result.h"

typedef struct ssl_st SSL;
typedef struct ssl_ctx_st SSL_CTX;

namespace gateway {

/// A server's side of TLS 1.2 and 1.3, for HTTP/2 alone. One thread makes and uses its connections.
class Tls {
 public:
  struct FreeConnection {
    void operator()(SSL* connection) const;
  };
  using Connection = std::unique_ptr<SSL, FreeConnection>;

  /// Files in PEM: the certificate with those between it and its authority, and its key.
  static VorselKelp::Result<Tls> make(const std::string& certificate, const std::string& key);

  /// Null when OpenSSL fails. The socket is the caller's.
  [[nodiscard]] Connection accept(int socket) const;

 private:
  explicit Tls(SSL_CTX* context);
  std::shared_ptr<SSL_CTX> context_;
};

}  // namespace gateway
