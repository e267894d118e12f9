#include "json/Writer.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "base/Text.h"

namespace VorselKelp::json {
namespace {

std::string_view shortEscape(char c) {
  switch (c) {
    case '"':
      return "\\\"";
    case '\\':
      return "\\\\";
    case '\b':
      return "\\b";
    case '\f':
      return "\\f";
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      return {};
  }
}

bool isPlain(unsigned char c) {
  return c >= 0x20 && c < 0x80 && c != '"' && c != '\\';
}

/// How many bytes the text begins with that stand for themselves; most of a text are looked at eight at once.
std::size_t plainBytes(std::string_view text) {
  constexpr std::uint64_t ones = 0x0101010101010101, tops = ones << 7;
  // The top bit of each byte that is zero, and perhaps of bytes behind one.
  const auto zeros = [](std::uint64_t bytes) { return (bytes - ones) & ~bytes; };
  std::size_t i = 0;
  for (std::uint64_t bytes = 0; i + sizeof bytes <= text.size(); i += sizeof bytes) {
    std::memcpy(&bytes, text.data() + i, sizeof bytes);
    const auto small = (bytes - ones * 0x20) & ~bytes;
    if (((bytes | small | zeros(bytes ^ (ones * '"')) | zeros(bytes ^ (ones * '\\'))) & tops) != 0) break;
  }
  while (i < text.size() && isPlain(static_cast<unsigned char>(text[i]))) ++i;
  return i;
}

}  // namespace

void Writer::text(std::string_view text) {
  out_ += '"';
  bool ascii = true;
  std::size_t written = 0;
  for (std::size_t i = plainBytes(text); i < text.size(); i += plainBytes(text.substr(i))) {
    const char c = text[i];
    if (static_cast<unsigned char>(c) >= 0x80) {
      ascii = false;
    } else {
      out_.append(text, written, i - written);
      written = i + 1;
      escape(c);
    }
    ++i;
  }
  out_.append(text, written);
  out_ += '"';
  if (!ascii && !isValidUtf8(text)) failed_ = true;
}

void Writer::escape(char c) {
  if (const auto shortForm = shortEscape(c); !shortForm.empty()) {
    out_ += shortForm;
    return;
  }
  std::array<char, 8> code{};
  std::snprintf(code.data(), code.size(), "\\u%04x", static_cast<unsigned char>(c));
  out_ += code.data();
}

void Writer::number(std::int64_t number) {
  out_ += std::to_string(number);
}

void Writer::number(double number) {
  if (!std::isfinite(number)) failed_ = true;
  out_ += std::isfinite(number) ? decimalText(number) : "0";
}

void Writer::key(std::string_view name, bool first) {
  if (!first) out_ += ',';
  text(name);
  out_ += ':';
}

}  // namespace VorselKelp::json
