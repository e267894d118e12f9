#include "net/Transfer.h"

#include <sys/socket.h>

#include <algorithm>
#include <cmath>
#include <string_view>

namespace VorselKelp::posix {
namespace {

/// All header lines of one request's responses together. Redirects have no other bound on theirs.
constexpr std::size_t headLimit = std::size_t{256} << 10;
constexpr long mostRedirects = 5;

Transfer::Clock::duration durationOf(double seconds) {
  return std::chrono::milliseconds(static_cast<std::int64_t>(std::clamp(seconds, 0.001, 1e6) * 1000));
}

Transfer::Clock::duration timeoutOf(const platform::URLRequest& request) {
  const double seconds = std::min(request.timeout, request.sessionTimeout.value_or(request.timeout));
  return durationOf(std::isfinite(seconds) && seconds > 0 ? seconds : 60);
}

Transfer::Clock::time_point endOf(const URLSessionOptions& options) {
  if (!options.longestRequest) return Transfer::Clock::time_point::max();
  return Transfer::Clock::now() + durationOf(*options.longestRequest);
}

}  // namespace

Transfer::Transfer(const CurlLibrary& curl, const URLSessionOptions& options, platform::URLRequest request,
                   platform::URLSession::Completion completion)
    : curl_(curl),
      options_(options),
      request_(std::move(request)),
      completion_(std::move(completion)),
      timeout_(timeoutOf(request_)),
      lastByte_(Clock::now()),
      end_(endOf(options)) {}

Transfer::~Transfer() {
  if (handle_) curl_.easyCleanup(handle_);
  curl_.listFree(headerList_);
}

bool Transfer::prepare(const std::string& certificateFile) {
  handle_ = curl_.easyInit();
  if (!handle_) return false;
  set(CURLOPT_URL, request_.url.c_str());
  set(CURLOPT_PRIVATE, static_cast<void*>(this));
  set(CURLOPT_ERRORBUFFER, errorText_);
  set(CURLOPT_HEADERFUNCTION, &Transfer::onHeader);
  set(CURLOPT_HEADERDATA, static_cast<void*>(this));
  set(CURLOPT_WRITEFUNCTION, &Transfer::onBody);
  set(CURLOPT_WRITEDATA, static_cast<void*>(this));
  set(CURLOPT_XFERINFOFUNCTION, &Transfer::onProgress);
  set(CURLOPT_XFERINFODATA, static_cast<void*>(this));
  set(CURLOPT_NOPROGRESS, 0L);
  setPolicy();
  setConnections();
  setTrust(certificateFile);
  setMethod();
  return setHeaders();
}

void Transfer::setPolicy() {
  set(CURLOPT_NOSIGNAL, 1L);
#if LIBCURL_VERSION_NUM >= 0x075500
  set(CURLOPT_PROTOCOLS_STR, "http,https");
  set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
#else
  set(CURLOPT_PROTOCOLS, CURLPROTO_HTTP | CURLPROTO_HTTPS);
  set(CURLOPT_REDIR_PROTOCOLS, CURLPROTO_HTTP | CURLPROTO_HTTPS);
#endif
  set(CURLOPT_FOLLOWLOCATION, options_.followRedirects ? 1L : 0L);
  set(CURLOPT_MAXREDIRS, mostRedirects);
  set(CURLOPT_DISALLOW_USERNAME_IN_URL, 1L);
  set(CURLOPT_ACCEPT_ENCODING, "");
  // libcurl would give up connecting after 300 s; the deadline is ours alone.
  const auto patience = std::chrono::duration_cast<std::chrono::milliseconds>(timeout_).count();
  set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(patience + 1000));
#if LIBCURL_VERSION_NUM >= 0x075700
  // A name server that does not answer must not hold up the end of this transfer, and with it all others.
  set(CURLOPT_QUICK_EXIT, 1L);
#endif
}

void Transfer::setConnections() {
  if (options_.connectionsToServer != 0) set(CURLOPT_PIPEWAIT, 1L);
  if (!options_.mayConnect) return;
  set(CURLOPT_PROXY, "");
  set(CURLOPT_OPENSOCKETFUNCTION, &Transfer::onConnect);
  set(CURLOPT_OPENSOCKETDATA, static_cast<void*>(this));
}

/// libcurl keeps loaded certificates for the next connection only when they come from a file and not from a
/// folder.
void Transfer::setTrust(const std::string& certificateFile) {
  if (certificateFile.empty()) return;
  set(CURLOPT_CAINFO, certificateFile.c_str());
  set(CURLOPT_CAPATH, nullptr);
}

/// A POST becomes a GET after a redirect of 301 to 303, which is libcurl's way as long as the method is not
/// spelled out.
void Transfer::setMethod() {
  const auto setBody = [this] {
    set(CURLOPT_POSTFIELDS, request_.body.data());
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body.size()));
  };
  if (request_.method == "HEAD") {
    set(CURLOPT_NOBODY, 1L);
  } else if (request_.method == "POST") {
    set(CURLOPT_POST, 1L);
    setBody();
  } else if (request_.method != "GET" || !request_.body.empty()) {
    if (!request_.body.empty()) setBody();
    set(CURLOPT_CUSTOMREQUEST, request_.method.c_str());
  }
}

bool Transfer::setHeaders() {
  bool typed = false;
  for (const auto& header : request_.headers) {
    // A name and a semicolon is libcurl's way to write a header without a value.
    if (!addHeader(header.value.empty() ? header.name + ";" : header.name + ": " + header.value))
      return false;
    typed = typed ||
            (header.name.size() == 12 && std::ranges::equal(header.name, std::string_view("content-type"), {},
                                                            [](char c) { return c | 0x20; }));
  }
  // Left to itself libcurl calls every body a form, and asks leave for a large one.
  if (!typed && !addHeader("Content-Type:")) return false;
  if (!addHeader("Expect:")) return false;
  set(CURLOPT_HTTPHEADER, headerList_);
  return true;
}

bool Transfer::addHeader(const std::string& line) {
  auto* list = curl_.listAppend(headerList_, line.c_str());
  if (list) headerList_ = list;
  return list != nullptr;
}

std::size_t Transfer::onHeader(char* data, std::size_t size, std::size_t count, void* self) {
  auto& transfer = *static_cast<Transfer*>(self);
  transfer.lastByte_ = Clock::now();
  transfer.headBytes_ += size * count;
  if (transfer.headBytes_ > headLimit) {
    transfer.tooLarge_ = true;
    return 0;
  }
  if (transfer.head_.addLine({data, size * count})) {
    transfer.body_.clear();
    transfer.bodyBytes_ = 0;
  }
  return size * count;
}

std::size_t Transfer::onBody(char* data, std::size_t size, std::size_t count, void* self) {
  auto& transfer = *static_cast<Transfer*>(self);
  transfer.lastByte_ = Clock::now();
  transfer.bodyBytes_ += size * count;
  if (transfer.bodyBytes_ > transfer.request_.responseLimit) {
    transfer.tooLarge_ = true;
    return 0;
  }
  return transfer.takePiece({data, size * count}) ? size * count : 0;
}

/// libcurl keeps the bodies of the redirects that it follows to itself.
bool Transfer::takePiece(std::string_view piece) {
  if (request_.discardBody) return true;
  if (!request_.bodyConsumer) {
    body_ += piece;
    return true;
  }
  const auto taken = request_.bodyConsumer(piece);
  if (!taken) refusal_ = taken.error();
  return taken.ok();
}

/// Whatever a name was resolved to before, this is the address that the connection goes to.
curl_socket_t Transfer::onConnect(void* self, curlsocktype, curl_sockaddr* address) {
  auto& transfer = *static_cast<Transfer*>(self);
  if (!transfer.options_.mayConnect(address->addr)) {
    transfer.mayNotConnect_ = true;
    return CURL_SOCKET_BAD;
  }
  return ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

/// `received` counts the bytes of the body before they are decompressed.
int Transfer::onProgress(void* self, curl_off_t, curl_off_t received, curl_off_t, curl_off_t sent) {
  auto& transfer = *static_cast<Transfer*>(self);
  if (received != transfer.received_ || sent != transfer.sent_) {
    transfer.lastByte_ = Clock::now();
    transfer.received_ = received;
    transfer.sent_ = sent;
  }
  if (received > 0 && static_cast<std::uint64_t>(received) > transfer.request_.responseLimit)
    transfer.tooLarge_ = true;
  return transfer.tooLarge_ ? 1 : 0;
}

platform::URLResult Transfer::finished(CURLcode code) {
  platform::URLResult result;
  // To libcurl a connection that ends within the headers is a response without a body.
  if (code == CURLE_OK && !head_.isComplete()) code = CURLE_PARTIAL_FILE;
  long status = 0;
  const char* url = nullptr;
  if (handle_) curl_.easyInformation(handle_, CURLINFO_RESPONSE_CODE, &status);
  if ((code != CURLE_OK || tooLarge_ || refusal_) && !isAnsweredByHead(status)) {
    result.error = errorOf(code);
    return result;
  }
  curl_.easyInformation(handle_, CURLINFO_EFFECTIVE_URL, &url);
  auto& response = result.response.emplace();
  response.statusCode = static_cast<int>(status);
  response.url = url ? url : request_.url;
  response.suggestedFilename = head_.suggestedFilename(response.url);
  response.headers = head_.takeHeaders();
  if (!hasNoBody(status)) result.body = std::move(body_);
  return result;
}

/// What becomes of a body that nobody wants changes nothing, unless it is that of a redirect or of an interim
/// response, which answer nobody.
bool Transfer::isAnsweredByHead(long status) const {
  const bool isFinal = (status >= 200 && status < 300) || status >= 400;
  return request_.discardBody && isFinal && head_.isComplete() && headBytes_ <= headLimit;
}

bool Transfer::hasNoBody(long status) const {
  return request_.discardBody || request_.method == "HEAD" || status == 204 || status == 304;
}

Error Transfer::errorOf(CURLcode code) const {
  if (refusal_) return *refusal_;
  if (tooLarge_) {
    return {headBytes_ > headLimit
                ? "The response's headers are too large"
                : "The response is larger than " + std::to_string(request_.responseLimit) + " bytes",
            CURLE_FILESIZE_EXCEEDED};
  }
  if (code == CURLE_COULDNT_CONNECT && mayNotConnect_)
    return {"The server's address may not be connected to", addressRefused};
  if (code == CURLE_OPERATION_TIMEDOUT) return {"The request timed out", code};
  return {errorText_[0] ? errorText_ : curl_.easyErrorText(code), code};
}

}  // namespace VorselKelp::posix
