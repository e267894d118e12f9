#include "gateway/Client.h"

#include <arpa/inet.h>
#include <nghttp2/nghttp2.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace gateway {
namespace {

/// For this thread alone: the gateway's has to bear those that hang up by itself.
void blockBrokenPipes() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGPIPE);
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

}  // namespace

std::string Client::Answer::field(const std::string& name) const {
  const auto found = std::ranges::find(fields, name, [](const auto& each) { return each.first; });
  return found == fields.end() ? "" : found->second;
}

struct Client::Callbacks {
  static Client& self(void* data) { return *static_cast<Client*>(data); }

  static int field(nghttp2_session*, const nghttp2_frame* frame, const std::uint8_t* name,
                   std::size_t nameSize, const std::uint8_t* value, std::size_t valueSize, std::uint8_t,
                   void* data) {
    auto& answer = self(data).answers_[frame->hd.stream_id];
    const std::string key(reinterpret_cast<const char*>(name), nameSize);
    const std::string text(reinterpret_cast<const char*>(value), valueSize);
    if (key == ":status") answer.status = std::stoi(text);
    answer.fields.emplace_back(key, text);
    return 0;
  }
  static int chunk(nghttp2_session*, std::uint8_t, std::int32_t id, const std::uint8_t* bytes,
                   std::size_t size, void* data) {
    self(data).answers_[id].body.append(reinterpret_cast<const char*>(bytes), size);
    return 0;
  }
  static int frame(nghttp2_session*, const nghttp2_frame* frame, void* data) {
    if (frame->hd.type == NGHTTP2_GOAWAY) self(data).leaving_ = true;
    return 0;
  }
  static int closed(nghttp2_session*, std::int32_t id, std::uint32_t error, void* data) {
    auto& answer = self(data).answers_[id];
    answer.closed = true;
    answer.error = error;
    self(data).bodies_.erase(id);
    return 0;
  }
  static ssize_t body(nghttp2_session*, std::int32_t id, std::uint8_t* buffer, std::size_t size,
                      std::uint32_t* flags, nghttp2_data_source*, void* data) {
    auto& [text, whole] = self(data).bodies_[id];
    const auto count = std::min(size, text.size());
    std::memcpy(buffer, text.data(), count);
    text.erase(0, count);
    if (text.empty() && whole) *flags |= NGHTTP2_DATA_FLAG_EOF;
    if (count == 0 && !whole) return NGHTTP2_ERR_DEFERRED;
    return static_cast<ssize_t>(count);
  }
};

Client::Client(std::uint16_t port, const std::string& protocols)
    : context_(SSL_CTX_new(TLS_client_method()), SSL_CTX_free), tls_(SSL_new(context_.get()), SSL_free) {
  blockBrokenPipes();
  socket_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const timeval patience{20, 0};
  ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  ::setsockopt(socket_, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  SSL_set_fd(tls_.get(), socket_);
  if (!protocols.empty())
    SSL_set_alpn_protos(tls_.get(), reinterpret_cast<const unsigned char*>(protocols.data()),
                        static_cast<unsigned>(protocols.size()));
  connected_ = ::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
               SSL_connect(tls_.get()) == 1;
  nghttp2_session_callbacks* callbacks = nullptr;
  nghttp2_session_callbacks_new(&callbacks);
  nghttp2_session_callbacks_set_on_header_callback(callbacks, Callbacks::field);
  nghttp2_session_callbacks_set_on_data_chunk_recv_callback(callbacks, Callbacks::chunk);
  nghttp2_session_callbacks_set_on_frame_recv_callback(callbacks, Callbacks::frame);
  nghttp2_session_callbacks_set_on_stream_close_callback(callbacks, Callbacks::closed);
  nghttp2_session_client_new(&session_, callbacks, this);
  nghttp2_session_callbacks_del(callbacks);
  nghttp2_submit_settings(session_, NGHTTP2_FLAG_NONE, nullptr, 0);
}

Client::~Client() {
  nghttp2_session_del(session_);
  ::close(socket_);
}

std::int32_t Client::post(const std::string& path, const Fields& fields, const std::string& body,
                          bool whole) {
  Fields all{{":method", "POST"}, {":scheme", "https"}, {":authority", "localhost"}, {":path", path}};
  all.insert(all.end(), fields.begin(), fields.end());
  std::vector<nghttp2_nv> values;
  for (auto& [name, value] : all)
    values.push_back({reinterpret_cast<std::uint8_t*>(name.data()),
                      reinterpret_cast<std::uint8_t*>(value.data()), name.size(), value.size(),
                      NGHTTP2_NV_FLAG_NONE});
  nghttp2_data_provider provider{{0}, Callbacks::body};
  const auto id = nghttp2_submit_request(session_, nullptr, values.data(), values.size(), &provider, nullptr);
  bodies_[id] = {body, whole};
  return id;
}

void Client::reset(std::int32_t stream) {
  nghttp2_submit_rst_stream(session_, NGHTTP2_FLAG_NONE, stream, NGHTTP2_CANCEL);
}

bool Client::sendRaw(const std::string& bytes) {
  return SSL_write(tls_.get(), bytes.data(), static_cast<int>(bytes.size())) > 0;
}

bool Client::flush() {
  const std::uint8_t* data = nullptr;
  for (auto size = nghttp2_session_mem_send(session_, &data); size > 0;
       size = nghttp2_session_mem_send(session_, &data)) {
    if (SSL_write(tls_.get(), data, static_cast<int>(size)) <= 0) return false;
  }
  return true;
}

bool Client::receive() {
  std::array<std::uint8_t, 16384> bytes;
  const int count = SSL_read(tls_.get(), bytes.data(), bytes.size());
  if (count <= 0 || nghttp2_session_mem_recv(session_, bytes.data(), static_cast<std::size_t>(count)) < 0) {
    ended_ = true;
    return false;
  }
  return flush();
}

const Client::Answer& Client::wait(std::int32_t stream) {
  flush();
  while (!answers_[stream].closed && !ended_) receive();
  return answers_[stream];
}

bool Client::waitForEnd() {
  flush();
  while (!ended_) receive();
  // A time-out leaves the connection open.
  char byte = 0;
  return ::recv(socket_, &byte, 1, MSG_DONTWAIT | MSG_PEEK) >= 0 || errno != EAGAIN;
}

}  // namespace gateway
