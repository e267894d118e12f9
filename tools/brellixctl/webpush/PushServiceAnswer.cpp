#include "brellixctl/webpush/PushServiceAnswer.h"

#include <algorithm>

#include "brellixctl/PlainText.h"

namespace brellixctl {

namespace platform = VorselKelp::platform;

namespace {

constexpr std::size_t shownOfBody = 200;

/// Absent ones are empty.
std::string headerOf(const platform::HTTPURLResponse& response, std::string_view name) {
  const auto found = std::ranges::find_if(response.headers, [name](const auto& header) {
    return std::ranges::equal(header.name, name, [](char a, char b) {
      return (a >= 'A' && a <= 'Z' ? static_cast<char>(a + ('a' - 'A')) : a) == b;
    });
  });
  return found != response.headers.end() ? found->value : "";
}

std::string refusalOf(int status, const std::string& retryAfter, const std::string& body) {
  const auto code = " (" + std::to_string(status) + ")";
  if (status == 404 || status == 410)
    return "The subscription is gone" + code + ": nobody will get this message, nor another one sent there";
  if (status == 413) return "The message is too large for this push service" + code;
  if (status == 429) {
    return "The push service gets too many messages" + code +
           (retryAfter.empty() ? ": try again later" : ": try again after " + retryAfter);
  }
  auto beginning = plainText(body.substr(0, shownOfBody));
  if (body.size() > shownOfBody) beginning += "...";
  return "The push service did not take the message" + code + (beginning.empty() ? "" : ": " + beginning);
}

/// "Retry-After" holds seconds or a date.
std::string withUnit(const std::string& retryAfter) {
  const bool seconds = !retryAfter.empty() && retryAfter.find_first_not_of("0123456789") == std::string::npos;
  return seconds ? retryAfter + " s" : retryAfter;
}

}  // namespace

PushServiceAnswer interpret(const platform::URLResult& result) {
  if (result.error) return {{}, "", "The push service does not answer: " + result.error->description};
  const int status = result.response->statusCode;
  PushServiceAnswer answer{{{"status", status}, {"accepted", status >= 200 && status < 300}}, "", ""};
  const auto retryAfter = headerOf(*result.response, "retry-after");
  if (!retryAfter.empty()) answer.json.push_back({"retryAfter", retryAfter});
  if (status >= 200 && status < 300) {
    answer.words = "The push service has accepted the message (" + std::to_string(status) + ").\n";
  } else {
    answer.failure = refusalOf(status, withUnit(retryAfter), result.body.value_or(""));
  }
  return answer;
}

}  // namespace brellixctl
