#include "base/Url.h"

#include <boost/url.hpp>

#include "base/Text.h"

namespace VorselKelp {

bool Url::isWeb() const {
  const std::string lower = lowerCased(scheme);
  return (lower == "http" || lower == "https") && !host.empty();
}

std::optional<Url> parseUrl(std::string_view text) {
  if (text.empty()) return std::nullopt;
  const auto parsed = boost::urls::parse_uri_reference(text);
  if (!parsed) return std::nullopt;
  return Url{std::string(text), std::string(parsed->scheme()), std::string(parsed->encoded_host())};
}

bool isWebUrl(std::string_view text) {
  const auto url = parseUrl(text);
  return url && url->isWeb();
}

std::optional<std::string> appendingPathComponent(std::string_view base, std::string_view component) {
  const auto parsed = boost::urls::parse_uri_reference(base);
  if (!parsed) return std::nullopt;
  boost::urls::url url(*parsed);
  auto segments = url.segments();
  if (!segments.empty() && segments.back().empty()) segments.pop_back();
  segments.push_back(component);
  return std::string(url.buffer());
}

std::string escaped(std::string_view text) {
  return boost::urls::encode(text, boost::urls::unreserved_chars);
}

std::string lastPathComponent(std::string_view url) {
  const auto parsed = boost::urls::parse_uri_reference(url);
  if (!parsed || parsed->segments().empty()) return {};
  return std::string(parsed->segments().back());
}

}  // namespace VorselKelp
