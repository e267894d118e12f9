#include "gateway/http2/Tls.h"

#include <openssl/err.h>
#include <openssl/ssl.h>

#include <string_view>

namespace gateway {

using VorselKelp::Error;
using VorselKelp::Result;

namespace {

constexpr std::string_view protocol = "\x02h2";

/// Whoever offers protocols has to offer this one.
int selectProtocol(SSL*, const unsigned char** chosen, unsigned char* size, const unsigned char* offered,
                   unsigned offeredSize, void*) {
  unsigned char* found = nullptr;
  const auto* ours = reinterpret_cast<const unsigned char*>(protocol.data());
  if (SSL_select_next_proto(&found, size, ours, protocol.size(), offered, offeredSize) !=
      OPENSSL_NPN_NEGOTIATED)
    return SSL_TLSEXT_ERR_ALERT_FATAL;
  *chosen = found;
  return SSL_TLSEXT_ERR_OK;
}

Error tlsError(const std::string& what) {
  char text[256] = {};
  ERR_error_string_n(ERR_get_error(), text, sizeof text);
  ERR_clear_error();
  return {what + ": " + text};
}

}  // namespace

void Tls::FreeConnection::operator()(SSL* connection) const {
  SSL_free(connection);
}

Tls::Tls(SSL_CTX* context) : context_(context, SSL_CTX_free) {}

Result<Tls> Tls::make(const std::string& certificate, const std::string& key) {
  SSL_CTX* context = SSL_CTX_new(TLS_server_method());
  if (!context) return tlsError("TLS");
  Tls tls(context);
  SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION);
  SSL_CTX_set_options(context,
                      SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_COMPRESSION | SSL_OP_IGNORE_UNEXPECTED_EOF);
  SSL_CTX_set_mode(context, SSL_MODE_RELEASE_BUFFERS | SSL_MODE_ENABLE_PARTIAL_WRITE |
                                SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
  SSL_CTX_set_session_cache_mode(context, SSL_SESS_CACHE_OFF);
  SSL_CTX_set_alpn_select_cb(context, selectProtocol, nullptr);
  if (SSL_CTX_use_certificate_chain_file(context, certificate.c_str()) != 1) return tlsError(certificate);
  if (SSL_CTX_use_PrivateKey_file(context, key.c_str(), SSL_FILETYPE_PEM) != 1) return tlsError(key);
  if (SSL_CTX_check_private_key(context) != 1) return tlsError(key + " does not belong to " + certificate);
  return tls;
}

Tls::Connection Tls::accept(int socket) const {
  Connection connection(SSL_new(context_.get()));
  if (!connection || SSL_set_fd(connection.get(), socket) != 1) return nullptr;
  SSL_set_accept_state(connection.get());
  return connection;
}

}  // namespace gateway
