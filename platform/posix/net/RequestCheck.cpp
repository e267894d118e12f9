#include "net/RequestCheck.h"

#include <curl/curl.h>

#include <algorithm>
#include <string_view>

namespace VorselKelp::posix {
namespace {

bool isToken(std::string_view text) {
  static constexpr std::string_view extra = "!#$%&'*+-.^_`|~";
  return !text.empty() && std::ranges::all_of(text, [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           extra.find(c) != std::string_view::npos;
  });
}

bool isControl(char c) {
  return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7f;
}

/// Where the host should be, and is none, libcurl would take the path's beginning for it.
bool namesHost(std::string_view url, std::string_view scheme) {
  return url.size() > scheme.size() && url[scheme.size()] != '/' &&
         std::ranges::equal(url.substr(0, scheme.size()), scheme, [](char a, char b) {
           return (a >= 'A' && a <= 'Z' ? static_cast<char>(a + ('a' - 'A')) : a) == b;
         });
}

}  // namespace

std::optional<Error> problemOf(const platform::URLRequest& request) {
  if (!namesHost(request.url, "http://") && !namesHost(request.url, "https://")) {
    return Error{"Neither an http nor an https URL with a host", CURLE_UNSUPPORTED_PROTOCOL};
  }
  if (std::ranges::any_of(request.url, [](char c) { return isControl(c) || c == ' ' || c == '\t'; })) {
    return Error{"The URL holds a blank or a control character", CURLE_URL_MALFORMAT};
  }
  if (!isToken(request.method)) return Error{"Not a request method", CURLE_BAD_FUNCTION_ARGUMENT};
  for (const auto& header : request.headers) {
    if (!isToken(header.name) || std::ranges::any_of(header.value, isControl)) {
      return Error{"A header holds a line break or another character that headers can't have",
                   CURLE_BAD_FUNCTION_ARGUMENT};
    }
  }
  return {};
}

}  // namespace VorselKelp::posix
