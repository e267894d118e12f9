#include "gateway/http2/Connection.h"

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <sys/epoll.h>

#include <algorithm>
#include <array>
#include <utility>

namespace gateway {
namespace {

constexpr std::size_t piece = std::size_t{16} << 10;  // bytes: a record of TLS
constexpr int piecesAtOnce = 4;                       // others wait meanwhile

/// Long enough for a request that crossed the announcement.
constexpr auto crossing = std::chrono::seconds(1);

}  // namespace

Connection::Connection(const Parts& parts, int socket)
    : loop_(parts.loop),
      owner_(parts.owner),
      limits_(parts.limits),
      socket_(socket),
      tls_(parts.tls.accept(socket)),
      session_(parts.owner, parts.limits, parts.budget) {
  tls_ ? expect(EPOLLIN) : close();
}

Connection::~Connection() {
  loop_.forget(socket_.number(), *this);
}

void Connection::ready(std::uint32_t events) {
  if (closed_) return;
  if ((events & EPOLLERR) != 0) return close();
  if (stage_ == Stage::handshake) handshake();
  if (closed_ || stage_ != Stage::serving) return;
  if ((events & (EPOLLIN | EPOLLHUP)) != 0 && unsent_.empty()) read();
  flush();
}

void Connection::handshake() {
  ERR_clear_error();
  const int result = SSL_do_handshake(tls_.get());
  if (result != 1) return stuck(result);
  const unsigned char* protocol = nullptr;
  unsigned size = 0;
  SSL_get0_alpn_selected(tls_.get(), &protocol, &size);
  // Whoever offers nothing speaks something else.
  if (size == 0) return close();
  stage_ = Stage::serving;
  moved_ = Clock::now();
}

void Connection::read() {
  std::array<char, piece> bytes;
  for (int i = 0; !closed_ && (i < piecesAtOnce || SSL_pending(tls_.get()) > 0); ++i) {
    ERR_clear_error();
    const int count = SSL_read(tls_.get(), bytes.data(), static_cast<int>(bytes.size()));
    if (count <= 0) return stuck(count);
    if (!session_.take({bytes.data(), static_cast<std::size_t>(count)})) {
      flush();
      return close();
    }
  }
}

void Connection::flush() {
  if (closed_ || stage_ != Stage::serving) return;
  if (!unsent_.empty()) {
    auto rest = std::exchange(unsent_, {});
    if (!write(rest)) return;
  }
  std::string gathered;
  for (auto next = session_.next(); !next.empty(); next = session_.next()) {
    if (gathered.size() + next.size() > piece && !gathered.empty()) {
      if (!write(std::exchange(gathered, {}))) {
        unsent_ += next;
        return;
      }
    }
    gathered += next;
  }
  if (!gathered.empty() && !write(gathered)) return;
  if (session_.ended()) return close();
  expect(EPOLLIN);
}

/// False when not all could be sent: the rest is kept, or the connection is closed.
bool Connection::write(std::string_view bytes) {
  while (!bytes.empty()) {
    ERR_clear_error();
    const int count = SSL_write(tls_.get(), bytes.data(), static_cast<int>(bytes.size()));
    if (count <= 0) {
      unsent_ = bytes;
      stuck(count);
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(count));
    moved_ = Clock::now();
  }
  return true;
}

void Connection::stuck(int result) {
  switch (SSL_get_error(tls_.get(), result)) {
    case SSL_ERROR_WANT_READ:
      return expect(unsent_.empty() ? EPOLLIN : EPOLLIN | EPOLLOUT);
    case SSL_ERROR_WANT_WRITE:
      return expect(EPOLLOUT);
    default:
      ERR_clear_error();
      close();
  }
}

void Connection::expect(std::uint32_t events) {
  if (expected_ == events) return;
  expected_ = events;
  if (!loop_.watch(socket_.number(), events, *this)) close();
}

void Connection::answer(std::int32_t stream, const Response& response) {
  session_.answer(stream, response);
  moved_ = Clock::now();
}

void Connection::look(Clock::time_point now) {
  if (closed_) return;
  if (stage_ == Stage::handshake) {
    if (now - moved_ > limits_.handshake) close();
    return;
  }
  if (!unsent_.empty() && now - moved_ > limits_.reading) return close();
  session_.refuseLate(now);
  if (session_.idle() && now - moved_ > limits_.idle) leave();
  if (!leaving_) return;
  const bool heard = session_.idle() && now - *leaving_ > crossing;
  if (heard && !std::exchange(ended_, true)) session_.end();
  if (now - *leaving_ > limits_.farewell) close();
}

void Connection::close() {
  if (!std::exchange(closed_, true)) owner_.closing();
}

void Connection::leave() {
  if (leaving_) return;
  leaving_ = Clock::now();
  if (stage_ == Stage::handshake) return close();
  session_.announceEnd();
}

}  // namespace gateway
