#include "base/Url.h"

#include <algorithm>
#include <boost/url.hpp>
#include <utility>

#include "base/Text.h"

namespace VorselKelp {
namespace {

bool isForeign(char c) {
  return static_cast<unsigned char>(c) > 0x7F;
}

/// Scheme and authority: what stands before the path, and can't be written in other characters.
std::string_view untilPath(std::string_view text) {
  const auto colon = text.find_first_of(":/?#");
  const auto begin = colon != std::string_view::npos && text[colon] == ':' ? colon + 1 : 0;
  if (!text.substr(begin).starts_with("//")) return text.substr(0, begin);
  return text.substr(0, text.find_first_of("/?#", begin + 2));
}

/// Whether the escape that `text` begins with is whole.
bool isEscape(std::string_view text) {
  constexpr std::string_view digits = "0123456789abcdefABCDEF";
  return text.size() > 2 && digits.find(text[1]) != std::string_view::npos &&
         digits.find(text[2]) != std::string_view::npos;
}

std::string encoded(std::string_view text) {
  static constexpr boost::urls::grammar::lut_chars plain = boost::urls::unreserved_chars + "!$&'()*+,;=:@/?";
  std::string out;
  bool inFragment = false;
  std::size_t written = 0;
  for (std::size_t i = untilPath(text).size(); i < text.size(); ++i) {
    const char c = text[i];
    const bool opensFragment = c == '#' && !std::exchange(inFragment, true);
    if (plain(c) || opensFragment || (c == '%' && isEscape(text.substr(i)))) continue;
    out.append(text, written, i - written);
    out += escaped(text.substr(i, 1));
    written = i + 1;
  }
  out.append(text, written);
  return out;
}

}  // namespace

bool Url::isWeb() const {
  const std::string lower = lowerCased(scheme);
  return (lower == "http" || lower == "https") && !host.empty();
}

std::optional<Url> parseUrl(std::string_view text) {
  if (text.empty() || text.front() == ' ' || text.back() == ' ') return std::nullopt;
  if (std::ranges::any_of(text, isAsciiControl) || !isValidUtf8(text)) return std::nullopt;
  std::string whole = encoded(text);
  const auto parsed = boost::urls::parse_uri_reference(whole);
  // A port that is none is left to the path by this parser.
  if (!parsed || (parsed->has_authority() && !parsed->is_path_absolute() && !parsed->encoded_path().empty()))
    return std::nullopt;
  Url url{{}, std::string(parsed->scheme()), std::string(parsed->encoded_host())};
  url.text = std::move(whole);
  return url;
}

bool hasForeignHost(std::string_view text) {
  return std::ranges::any_of(untilPath(text), isForeign);
}

std::optional<std::string> webUrl(std::string_view text) {
  auto url = parseUrl(text);
  if (!url || !url->isWeb()) return std::nullopt;
  return std::move(url->text);
}

bool isWebUrl(std::string_view text) {
  return webUrl(text).has_value();
}

std::optional<std::string> appendingPathComponent(std::string_view base, std::string_view component) {
  const auto parsed = parseUrl(base);
  if (!parsed) return std::nullopt;
  boost::urls::url url(parsed->text);
  auto segments = url.segments();
  if (!segments.empty() && segments.back().empty()) segments.pop_back();
  segments.push_back(component);
  return std::string(url.buffer());
}

std::string escaped(std::string_view text) {
  return boost::urls::encode(text, boost::urls::unreserved_chars);
}

std::string lastPathComponent(std::string_view url) {
  const auto parsed = parseUrl(url);
  if (!parsed) return {};
  const boost::urls::url_view view(parsed->text);
  return view.segments().empty() ? std::string() : std::string(view.segments().back());
}

}  // namespace VorselKelp
