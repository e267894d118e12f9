#include "gateway/http2/Session.h"

#include <nghttp2/nghttp2.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

namespace gateway {
namespace {

constexpr std::int32_t connectionWindow = 1 << 20;  // bytes
constexpr std::uint32_t streamWindow = 1 << 14;     // bytes; a body has less
constexpr std::size_t fieldCost = 32;               // bytes, as the protocol counts

std::string_view viewOf(const std::uint8_t* bytes, std::size_t size) {
  return {reinterpret_cast<const char*>(bytes), size};
}

nghttp2_nv fieldOf(std::string_view name, std::string_view value) {
  const auto bytes = [](std::string_view text) {
    return reinterpret_cast<std::uint8_t*>(const_cast<char*>(text.data()));
  };
  return {bytes(name), bytes(value), name.size(), value.size(), NGHTTP2_NV_FLAG_NONE};
}

}  // namespace

struct Session::Stream {
  Stream(std::int32_t number, std::shared_ptr<Budget> budget) : id(number), load(std::move(budget)) {}

  const std::int32_t id;
  Clock::time_point began = Clock::now();
  Load load;
  Request request{};
  std::size_t headSize = 0;
  int refused = 0;  ///< with this status; 0: not
  bool handedOver = false;
  bool whole = false;
  bool answered = false;
  std::string answer{};
  std::size_t sent = 0;
};

struct Session::Callbacks {
  static Session& self(void* data) { return *static_cast<Session*>(data); }
  static Stream* streamOf(nghttp2_session* session, std::int32_t id) {
    return static_cast<Stream*>(nghttp2_session_get_stream_user_data(session, id));
  }

  static int begun(nghttp2_session* session, const nghttp2_frame* frame, void* data) {
    if (frame->hd.type != NGHTTP2_HEADERS || frame->headers.cat != NGHTTP2_HCAT_REQUEST) return 0;
    auto& made = self(data);
    const auto id = frame->hd.stream_id;
    auto stream = std::make_unique<Stream>(id, made.budget_);
    nghttp2_session_set_stream_user_data(session, id, stream.get());
    made.streams_.emplace(id, std::move(stream));
    return 0;
  }

  static int field(nghttp2_session* session, const nghttp2_frame* frame, const std::uint8_t* name,
                   std::size_t nameSize, const std::uint8_t* value, std::size_t valueSize, std::uint8_t,
                   void* data) {
    auto* stream = streamOf(session, frame->hd.stream_id);
    // Trailers mean nothing here.
    if (!stream || stream->refused || frame->headers.cat != NGHTTP2_HCAT_REQUEST) return 0;
    const auto key = viewOf(name, nameSize);
    const auto text = viewOf(value, valueSize);
    const auto cost = nameSize + valueSize + fieldCost;
    stream->headSize += cost;
    if (stream->headSize > self(data).limits_.head) {
      stream->refused = 431;
      return 0;
    }
    const bool kept = key == ":method" || key == ":path" || knownField(key);
    if (!kept) return 0;
    if (!stream->load.add(cost)) {
      stream->refused = 503;
    } else if (key == ":method") {
      stream->request.method = text;
    } else if (key == ":path") {
      stream->request.path = text;
    } else {
      stream->request.fields.push_back({std::string(key), std::string(text)});
    }
    return 0;
  }

  static int body(nghttp2_session* session, std::uint8_t, std::int32_t id, const std::uint8_t* bytes,
                  std::size_t size, void*) {
    auto* stream = streamOf(session, id);
    if (!stream || stream->refused || stream->handedOver) return 0;
    auto& text = stream->request.body;
    const auto taken = std::min(size, Request::mostBody - text.size());
    if (taken > 0 && !stream->load.add(taken)) {
      stream->refused = 503;
      return 0;
    }
    text.append(viewOf(bytes, taken));
    if (taken < size) stream->request.bodyTooLarge = true;
    return 0;
  }

  static int frame(nghttp2_session* session, const nghttp2_frame* frame, void* data) {
    auto* stream = streamOf(session, frame->hd.stream_id);
    if (!stream) return 0;
    if (frame->hd.type != NGHTTP2_HEADERS && frame->hd.type != NGHTTP2_DATA) return 0;
    stream->whole = (frame->hd.flags & NGHTTP2_FLAG_END_STREAM) != 0;
    if (stream->refused)
      self(data).refuse(*stream, stream->refused);
    else if (stream->whole || stream->request.bodyTooLarge)
      self(data).requestEnded(*stream);
    return 0;
  }

  /// A stream that was answered before it was whole: the rest need not come.
  static int sent(nghttp2_session* session, const nghttp2_frame* frame, void*) {
    const bool last = (frame->hd.flags & NGHTTP2_FLAG_END_STREAM) != 0;
    if (!last || (frame->hd.type != NGHTTP2_HEADERS && frame->hd.type != NGHTTP2_DATA)) return 0;
    const auto* stream = streamOf(session, frame->hd.stream_id);
    if (stream && !stream->whole)
      nghttp2_submit_rst_stream(session, NGHTTP2_FLAG_NONE, frame->hd.stream_id, NGHTTP2_NO_ERROR);
    return 0;
  }

  static int closed(nghttp2_session*, std::int32_t id, std::uint32_t, void* data) {
    self(data).streams_.erase(id);
    return 0;
  }

  static ssize_t answer(nghttp2_session*, std::int32_t, std::uint8_t* buffer, std::size_t size,
                        std::uint32_t* flags, nghttp2_data_source* source, void*) {
    auto& stream = *static_cast<Stream*>(source->ptr);
    const auto count = std::min(size, stream.answer.size() - stream.sent);
    std::memcpy(buffer, stream.answer.data() + stream.sent, count);
    stream.sent += count;
    if (stream.sent == stream.answer.size()) *flags |= NGHTTP2_DATA_FLAG_EOF;
    return static_cast<ssize_t>(count);
  }
};

void Session::FreeSession::operator()(nghttp2_session* session) const {
  nghttp2_session_del(session);
}

Session::Session(Events& events, const Limits& limits, std::shared_ptr<Budget> budget)
    : events_(events), limits_(limits), budget_(std::move(budget)) {
  nghttp2_session_callbacks* callbacks = nullptr;
  nghttp2_session_callbacks_new(&callbacks);
  nghttp2_session_callbacks_set_on_begin_headers_callback(callbacks, Callbacks::begun);
  nghttp2_session_callbacks_set_on_header_callback(callbacks, Callbacks::field);
  nghttp2_session_callbacks_set_on_data_chunk_recv_callback(callbacks, Callbacks::body);
  nghttp2_session_callbacks_set_on_frame_recv_callback(callbacks, Callbacks::frame);
  nghttp2_session_callbacks_set_on_frame_send_callback(callbacks, Callbacks::sent);
  nghttp2_session_callbacks_set_on_stream_close_callback(callbacks, Callbacks::closed);
  nghttp2_session* session = nullptr;
  nghttp2_option* option = nullptr;
  nghttp2_option_new(&option);
  nghttp2_option_set_no_closed_streams(option, 1);
  nghttp2_option_set_stream_reset_rate_limit(option, limits_.resets, limits_.resetsEachSecond);
  nghttp2_session_server_new2(&session, callbacks, this, option);
  nghttp2_option_del(option);
  nghttp2_session_callbacks_del(callbacks);
  session_.reset(session);
  const std::array settings{nghttp2_settings_entry{NGHTTP2_SETTINGS_MAX_CONCURRENT_STREAMS, limits_.streams},
                            nghttp2_settings_entry{NGHTTP2_SETTINGS_INITIAL_WINDOW_SIZE, streamWindow},
                            nghttp2_settings_entry{NGHTTP2_SETTINGS_MAX_HEADER_LIST_SIZE,
                                                   static_cast<std::uint32_t>(limits_.head)}};
  nghttp2_submit_settings(session, NGHTTP2_FLAG_NONE, settings.data(), settings.size());
  nghttp2_session_set_local_window_size(session, NGHTTP2_FLAG_NONE, 0, connectionWindow);
}

Session::~Session() = default;

bool Session::take(std::string_view bytes) {
  const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.data());
  return nghttp2_session_mem_recv(session_.get(), data, bytes.size()) >= 0;
}

std::string_view Session::next() {
  const std::uint8_t* data = nullptr;
  const auto size = nghttp2_session_mem_send(session_.get(), &data);
  return size <= 0 ? std::string_view() : viewOf(data, static_cast<std::size_t>(size));
}

bool Session::ended() const {
  return nghttp2_session_want_read(session_.get()) == 0 && nghttp2_session_want_write(session_.get()) == 0;
}

void Session::requestEnded(Stream& stream) {
  if (std::exchange(stream.handedOver, true)) return;
  events_.requested(stream.id, std::move(stream.request), std::move(stream.load));
}

void Session::refuse(Stream& stream, int status) {
  if (std::exchange(stream.handedOver, true)) return;
  submit(stream, events_.refusal(stream.id, status, stream.request));
}

void Session::refuseLate(Clock::time_point now) {
  for (auto& [id, stream] : streams_) {
    if (!stream->whole && !stream->handedOver && now - stream->began > limits_.request) refuse(*stream, 400);
  }
}

void Session::answer(std::int32_t id, const Response& response) {
  const auto found = streams_.find(id);
  if (found != streams_.end()) submit(*found->second, response);
}

void Session::submit(Stream& stream, const Response& response) {
  if (std::exchange(stream.answered, true)) return;
  const auto status = std::to_string(response.status);
  std::vector<nghttp2_nv> fields{fieldOf(":status", status)};
  for (const auto& [name, value] : response.fields) fields.push_back(fieldOf(name, value));
  stream.answer = response.body;
  nghttp2_data_provider body{{.ptr = &stream}, Callbacks::answer};
  nghttp2_submit_response(session_.get(), stream.id, fields.data(), fields.size(),
                          stream.answer.empty() ? nullptr : &body);
}

void Session::announceEnd() {
  nghttp2_submit_shutdown_notice(session_.get());
}

void Session::end() {
  nghttp2_submit_goaway(session_.get(), NGHTTP2_FLAG_NONE,
                        nghttp2_session_get_last_proc_stream_id(session_.get()), NGHTTP2_NO_ERROR, nullptr,
                        0);
}

}  // namespace gateway
