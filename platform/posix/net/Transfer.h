#pragma once

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "VorselKelp/platform/URLSession.h"
#include "VorselKelpPosix/CurlURLSession.h"
#include "net/CurlLibrary.h"
#include "net/ResponseHead.h"

namespace VorselKelp::posix {

/// One request on its way: its libcurl handle, what has come back so far, and when its patience ends. Used on
/// the transfer thread alone.
class Transfer {
 public:
  using Clock = std::chrono::steady_clock;

  /// Library and options outlive it.
  Transfer(const CurlLibrary& curl, const URLSessionOptions& options, platform::URLRequest request,
           platform::URLSession::Completion completion);
  ~Transfer();
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  /// Makes the handle ready for libcurl; false when memory is short. An empty `certificateFile` leaves the
  /// trust to libcurl's own settings.
  bool prepare(const std::string& certificateFile);
  [[nodiscard]] CURL* handle() const { return handle_; }

  /// When the request has gone without a byte for as long as it may, or taken as long as it may.
  [[nodiscard]] Clock::time_point deadline() const { return std::min(lastByte_ + timeout_, end_); }

  /// The answer, once libcurl is done with the handle.
  [[nodiscard]] platform::URLResult finished(CURLcode code);
  [[nodiscard]] platform::URLSession::Completion takeCompletion() { return std::move(completion_); }
  [[nodiscard]] platform::BodyConsumer takeConsumer() { return std::move(request_.bodyConsumer); }

 private:
  template <class Value>
  void set(CURLoption option, Value value) {
    curl_.easySetOption(handle_, option, value);
  }
  void setPolicy();
  void setConnections();
  void setTrust(const std::string& certificateFile);
  void setMethod();
  bool setHeaders();
  bool addHeader(const std::string& line);
  [[nodiscard]] Error errorOf(CURLcode code) const;
  [[nodiscard]] bool isAnsweredByHead(long status) const;
  [[nodiscard]] bool hasNoBody(long status) const;
  bool takePiece(std::string_view piece);

  static std::size_t onHeader(char* data, std::size_t size, std::size_t count, void* self);
  static std::size_t onBody(char* data, std::size_t size, std::size_t count, void* self);
  static curl_socket_t onConnect(void* self, curlsocktype purpose, curl_sockaddr* address);
  static int onProgress(void* self, curl_off_t, curl_off_t received, curl_off_t, curl_off_t sent);

  const CurlLibrary& curl_;
  const URLSessionOptions& options_;
  platform::URLRequest request_;
  platform::URLSession::Completion completion_;
  CURL* handle_ = nullptr;
  curl_slist* headerList_ = nullptr;
  char errorText_[CURL_ERROR_SIZE] = {};

  Clock::duration timeout_;
  Clock::time_point lastByte_;
  const Clock::time_point end_;
  curl_off_t received_ = 0;
  curl_off_t sent_ = 0;

  ResponseHead head_;
  std::size_t headBytes_ = 0;
  std::string body_;
  std::size_t bodyBytes_ = 0;
  bool tooLarge_ = false;
  bool mayNotConnect_ = false;
  std::optional<Error> refusal_;  // the consumer's
};

}  // namespace VorselKelp::posix
