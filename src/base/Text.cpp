#include "base/Text.h"

#include <array>
#include <charconv>
#include <cmath>

namespace VorselKelp {
namespace {

bool isContinuation(unsigned char byte) {
  return (byte & 0xC0U) == 0x80U;
}

/// Bytes of the well-formed character that starts at `text`, 0 when there is none.
std::size_t characterLength(std::string_view text) {
  const auto at = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
  const unsigned first = at(0);
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first <= 0xDF) return isContinuation(static_cast<unsigned char>(at(1))) ? 2 : 0;
  const unsigned second = at(1);
  if (!isContinuation(static_cast<unsigned char>(second)) ||
      !isContinuation(static_cast<unsigned char>(at(2))))
    return 0;
  if (first >= 0xE0 && first <= 0xEF) {
    const bool overlong = first == 0xE0 && second < 0xA0;
    const bool surrogate = first == 0xED && second > 0x9F;
    return overlong || surrogate ? 0 : 3;
  }
  if (first >= 0xF0 && first <= 0xF4) {
    const bool overlong = first == 0xF0 && second < 0x90;
    const bool beyond = first == 0xF4 && second > 0x8F;
    return overlong || beyond || !isContinuation(static_cast<unsigned char>(at(3))) ? 0 : 4;
  }
  return 0;
}

void appendUtf8(std::string& out, std::uint32_t code) {
  const auto put = [&](std::uint32_t byte) { out += static_cast<char>(static_cast<unsigned char>(byte)); };
  if (code < 0x80) {
    put(code);
  } else if (code < 0x800) {
    put(0xC0 | (code >> 6));
    put(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    put(0xE0 | (code >> 12));
    put(0x80 | ((code >> 6) & 0x3F));
    put(0x80 | (code & 0x3F));
  } else {
    put(0xF0 | (code >> 18));
    put(0x80 | ((code >> 12) & 0x3F));
    put(0x80 | ((code >> 6) & 0x3F));
    put(0x80 | (code & 0x3F));
  }
}

/// Reads exactly `count` digits of `base` from the front of `text` and takes them off.
std::optional<std::uint32_t> takeDigits(std::string_view& text, std::size_t count, int base) {
  if (text.size() < count) return std::nullopt;
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + count, number, base);
  if (error != std::errc{} || end != text.data() + count) return std::nullopt;
  text.remove_prefix(count);
  return number;
}

/// The character behind a "\u" whose backslash and letter are already taken off.
std::optional<std::uint32_t> takeUnicodeEscape(std::string_view& text) {
  const auto first = takeDigits(text, 4, 16);
  if (!first || (*first >= 0xDC00 && *first <= 0xDFFF)) return std::nullopt;
  if (*first < 0xD800 || *first > 0xDBFF) return first;
  if (!text.starts_with("\\u")) return std::nullopt;
  text.remove_prefix(2);
  const auto second = takeDigits(text, 4, 16);
  if (!second || *second < 0xDC00 || *second > 0xDFFF) return std::nullopt;
  return 0x10000 + ((*first - 0xD800) << 10) + (*second - 0xDC00);
}

}  // namespace

bool isValidUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = characterLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

std::string decimalText(double number) {
  const double size = std::abs(number);
  const bool plain = size == 0 || (size >= 1e-4 && size < 1e16);
  std::array<char, 32> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                 plain ? std::chars_format::fixed : std::chars_format::scientific)
                       .ptr;
  std::string text(buffer.data(), end);
  if (std::isfinite(number) && text.find_first_of(".e") == std::string::npos) text += ".0";
  return text;
}

std::string replaceAll(std::string_view text, std::string_view what, std::string_view with) {
  std::string out;
  for (;;) {
    const auto at = text.find(what);
    out += text.substr(0, at);
    if (at == std::string_view::npos) return out;
    out += with;
    text.remove_prefix(at + what.size());
  }
}

std::string_view withoutByteOrderMark(std::string_view text) {
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  return text.starts_with(mark) ? text.substr(mark.size()) : text;
}

std::string withoutBackslashes(std::string_view text) {
  std::string out(text);
  std::erase(out, '\\');
  return out;
}

std::string hexText(const std::uint8_t* bytes, std::size_t count) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string out;
  out.reserve(count * 2);
  for (std::size_t i = 0; i < count; ++i) {
    out += digits[bytes[i] >> 4U];
    out += digits[bytes[i] & 0x0FU];
  }
  return out;
}

std::string lowerCased(std::string_view text) {
  std::string out(text);
  for (char& c : out) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return out;
}

std::string trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\n\v\f\r";
  const auto first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(blanks) - first + 1));
}

std::optional<std::string> fromNonLossyAscii(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const char c = text.front();
    if (static_cast<unsigned char>(c) > 127) return std::nullopt;
    text.remove_prefix(1);
    if (c != '\\') {
      out += c;
    } else if (text.starts_with('\\')) {
      out += '\\';
      text.remove_prefix(1);
    } else {
      const bool unicode = text.starts_with('u');
      if (unicode) text.remove_prefix(1);
      const auto code = unicode ? takeUnicodeEscape(text) : takeDigits(text, 3, 8);
      if (!code || (!unicode && *code > 0xFF)) return std::nullopt;
      appendUtf8(out, *code);
    }
  }
  return out;
}

std::string safeFileName(std::string_view suggested) {
  constexpr std::size_t longest = 64;
  if (const auto slash = suggested.find_last_of("/\\"); slash != std::string_view::npos)
    suggested.remove_prefix(slash + 1);
  std::string out;
  for (const char c : suggested) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       c == '.' || c == '-' || c == '_';
    out += plain ? c : '_';
  }
  if (out.size() > longest) out.erase(0, out.size() - longest);  // the end holds the extension
  if (const auto start = out.find_first_not_of('.'); start != 0) out.erase(0, start);
  return out.empty() ? "file" : out;
}

std::uint64_t stableHash(std::string_view text) {
  std::uint64_t hash = 0xcbf29ce484222325U;
  for (const char c : text) {
    hash ^= static_cast<unsigned char>(c);
    hash *= 0x100000001b3U;
  }
  return hash;
}

}  // namespace VorselKelp
