#include "net/ResponseHead.h"

#include <algorithm>

namespace VorselKelp::posix {
namespace {

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, lower, lower);
}

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char l = lower(c);
  return l >= 'a' && l <= 'f' ? l - 'a' + 10 : -1;
}

std::string percentDecoded(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() && hexDigit(text[i + 1]) >= 0 && hexDigit(text[i + 2]) >= 0) {
      result += static_cast<char>(hexDigit(text[i + 1]) * 16 + hexDigit(text[i + 2]));
      i += 2;
    } else {
      result += text[i];
    }
  }
  return result;
}

/// Takes a quoted text off the front of `rest`, without its quotes and escapes.
std::string takeQuoted(std::string_view& rest) {
  std::string text;
  std::size_t i = 1;
  for (; i < rest.size() && rest[i] != '"'; ++i) {
    if (rest[i] == '\\' && i + 1 < rest.size()) ++i;
    text += rest[i];
  }
  rest.remove_prefix(std::min(i + 1, rest.size()));
  return text;
}

std::string takeUntil(std::string_view& rest, std::string_view stops) {
  const auto end = std::min(rest.find_first_of(stops), rest.size());
  const std::string text(trimmed(rest.substr(0, end)));
  rest.remove_prefix(end);
  return text;
}

/// The name in "attachment; filename=...; filename*=UTF-8''..."; the second form wins, since it has a
/// character set.
std::string dispositionFilename(std::string_view rest) {
  std::string plain;
  takeUntil(rest, ";");
  while (!rest.empty()) {
    rest.remove_prefix(1);
    const std::string name = takeUntil(rest, "=;");
    if (rest.empty() || rest.front() == ';') continue;
    rest = rest.substr(1);
    rest.remove_prefix(std::min(rest.find_first_not_of(" \t"), rest.size()));
    const bool quoted = !rest.empty() && rest.front() == '"';
    const std::string value = quoted ? takeQuoted(rest) : takeUntil(rest, ";");
    rest.remove_prefix(std::min(rest.find(';'), rest.size()));
    if (equalIgnoringCase(name, "filename*") && equalIgnoringCase(value.substr(0, 6), "utf-8'")) {
      const auto quote = value.find('\'', 6);
      if (quote != std::string::npos) return percentDecoded(std::string_view(value).substr(quote + 1));
    }
    if (equalIgnoringCase(name, "filename") && plain.empty()) plain = value;
  }
  return plain;
}

std::string lastPathComponent(std::string_view url) {
  url = url.substr(0, url.find_first_of("?#"));
  const auto authority = url.find("://");
  if (authority == std::string_view::npos) return {};
  const auto path = url.find('/', authority + 3);
  return path == std::string_view::npos ? std::string() : percentDecoded(url.substr(url.rfind('/') + 1));
}

}  // namespace

bool ResponseHead::addLine(std::string_view line) {
  if (line.starts_with("HTTP/")) {
    headers_.clear();
    complete_ = false;
    return true;
  }
  complete_ = complete_ || line == "\r\n" || line == "\n";
  const auto colon = line.find(':');
  if (colon == std::string_view::npos || colon == 0) return false;
  headers_.push_back(
      {std::string(trimmed(line.substr(0, colon))), std::string(trimmed(line.substr(colon + 1)))});
  return false;
}

std::optional<std::string> ResponseHead::suggestedFilename(std::string_view url) const {
  std::string name;
  for (const auto& header : headers_) {
    if (equalIgnoringCase(header.name, "Content-Disposition") && name.empty())
      name = dispositionFilename(header.value);
  }
  if (name.empty()) name = lastPathComponent(url);
  return name.empty() ? std::nullopt : std::optional(std::move(name));
}

}  // namespace VorselKelp::posix
