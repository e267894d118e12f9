#include "gateway/desktop/PushAnswer.h"

#include <algorithm>
#include <chrono>

#include "VorselKelpPosix/CurlURLSession.h"

namespace gateway {
namespace {

namespace platform = VorselKelp::platform;

constexpr int cancelled = -999;
constexpr std::size_t longestRetryAfter = 64;

bool isRetryAfter(const platform::HTTPHeader& header) {
  return std::ranges::equal(header.name, std::string_view("retry-after"), [](char a, char b) {
    return (a >= 'A' && a <= 'Z' ? static_cast<char>(a + ('a' - 'A')) : a) == b;
  });
}

/// Seconds or a date, as it came; empty where there is none that can be handed on.
std::string retryAfterOf(const platform::HTTPURLResponse& response) {
  const auto found = std::ranges::find_if(response.headers, isRetryAfter);
  if (found == response.headers.end() || found->value.size() > longestRetryAfter) return {};
  const bool plain = std::ranges::all_of(found->value, [](char c) { return c >= ' ' && c <= '~'; });
  return plain ? found->value : "";
}

Answer unregistered() {
  using namespace std::chrono;
  const auto now = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
  return {410, "Unregistered", std::int64_t{now}};
}

Answer failed(int code) {
  if (code == VorselKelp::posix::addressRefused) return {400, "BadDeviceToken"};
  return {503, code == cancelled ? "Shutdown" : "ServiceUnavailable"};
}

}  // namespace

Answer answerOf(const platform::URLResult& result) {
  if (result.error) return failed(result.error->code);
  const int status = result.response->statusCode;
  if (status >= 200 && status < 300) return {};
  if (status == 404 || status == 410) return unregistered();
  if (status == 413) return {413, "PayloadTooLarge"};
  if (status == 429) return {429, "TooManyRequests", {}, retryAfterOf(*result.response)};
  if (status >= 400 && status < 500) return {400, "BadDeviceToken"};
  return {503, "ServiceUnavailable", {}, retryAfterOf(*result.response)};
}

}  // namespace gateway
