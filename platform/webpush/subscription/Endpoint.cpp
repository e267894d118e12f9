#include "VorselKelpWebPush/Endpoint.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

namespace VorselKelp::webpush {
namespace {

constexpr std::size_t longestEndpoint = 1000;
constexpr std::string_view lettersAndDigits =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";

Error wrongEndpoint(const char* why) {
  return {std::string("The endpoint ") + why};
}

bool consistsOf(std::string_view text, std::string_view others) {
  return std::ranges::all_of(text, [others](char c) {
    return lettersAndDigits.find(c) != std::string_view::npos || others.find(c) != std::string_view::npos;
  });
}

std::string lowerCased(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
  }
  return lower;
}

/// The number of a host that is written as one; absent for a name. IPv6 stands in brackets.
struct HostNumber {
  explicit HostNumber(const std::string& host) {
    in6_addr wide{};
    in_addr narrow{};
    if (host.starts_with('[')) {
      valid =
          host.ends_with(']') && ::inet_pton(AF_INET6, host.substr(1, host.size() - 2).c_str(), &wide) == 1;
      loopback = valid && IN6_IS_ADDR_LOOPBACK(&wide);
    } else if (::inet_pton(AF_INET, host.c_str(), &narrow) == 1) {
      valid = true;
      loopback = ntohl(narrow.s_addr) >> 24 == 127;
    }
  }
  bool valid = false;
  bool loopback = false;
};

/// The number behind a host, from ":" on; 0 where there is nothing, absent where it is none.
std::optional<unsigned> portOf(std::string_view text) {
  if (text.empty()) return 0;
  unsigned port = 0;
  const auto* end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data() + 1, end, port);
  if (text.front() != ':' || error != std::errc() || stopped != end || port == 0 || port > 65535)
    return std::nullopt;
  return port;
}

}  // namespace

Result<Endpoint> parseEndpoint(std::string_view url) {
  if (url.size() > longestEndpoint) return wrongEndpoint("has more than 1000 bytes");
  if (!consistsOf(url, "-._~:/?[]@!$&'()*+,;=%"))
    return wrongEndpoint("holds a character that addresses do not have");
  const auto schemeEnd = url.find("://");
  const auto scheme = lowerCased(url.substr(0, schemeEnd));
  if (schemeEnd == std::string_view::npos || (scheme != "https" && scheme != "http"))
    return wrongEndpoint("is neither an https nor an http address");
  const auto authority = url.substr(schemeEnd + 3).substr(0, url.substr(schemeEnd + 3).find_first_of("/?"));
  if (authority.find('@') != std::string_view::npos) return wrongEndpoint("names a user");
  const auto bracket = authority.find(']');
  const auto colon = authority.find(':', bracket == std::string_view::npos ? 0 : bracket);
  const auto host = lowerCased(authority.substr(0, colon));
  const HostNumber number(host);
  if (host.empty() || (!number.valid && !consistsOf(host, "-._"))) return wrongEndpoint("has no host");
  const auto port = portOf(colon == std::string_view::npos ? std::string_view() : authority.substr(colon));
  if (!port) return wrongEndpoint("has a port that is none");
  Endpoint endpoint{scheme + "://" + host, scheme == "https", number.loopback || host == "localhost"};
  if (*port != 0 && *port != (endpoint.secure ? 443U : 80U)) endpoint.origin += ":" + std::to_string(*port);
  return endpoint;
}

}  // namespace VorselKelp::webpush
