#include "content_ext/ColorFromHex.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace VorselKelp {
namespace {

/// Characters around the digits that are neither letters nor digits: those of ASCII, and what word processors
/// put there, U+0080 to U+00BF and U+2000 to U+206F (no-break spaces, curly quotes). All others count as
/// letters.
bool isAlphanumeric(std::string_view character) {
  const char c = character.front();
  if ((c & 0x80) == 0) return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
  if (character.size() == 2) return c != '\xC2';
  return character.size() != 3 || c != '\xE2' ||
         !(character[1] == '\x80' ||
           (character[1] == '\x81' && static_cast<unsigned char>(character[2]) <= 0xAF));
}

bool isContinuation(char c) {
  return (c & 0xC0) == 0x80;
}

bool isLead(char c) {
  return (c & 0xC0) == 0xC0;
}

// The characters at both ends; a byte that belongs to none counts as one.

std::string_view firstOf(std::string_view text) {
  std::size_t end = 1;
  while (isLead(text.front()) && end < text.size() && isContinuation(text[end])) ++end;
  return text.substr(0, end);
}

std::string_view lastOf(std::string_view text) {
  std::size_t begin = text.size() - 1;
  while (begin > 0 && isContinuation(text[begin])) --begin;
  return text.substr(isLead(text[begin]) ? begin : text.size() - 1);
}

std::string_view stripped(std::string_view text) {
  while (!text.empty() && !isAlphanumeric(firstOf(text))) text.remove_prefix(firstOf(text).size());
  while (!text.empty() && !isAlphanumeric(lastOf(text))) text.remove_suffix(lastOf(text).size());
  return text;
}

double component(std::uint32_t number, int shift) {
  return (number >> shift & 0xFFU) / 255.0;
}

double digit(std::uint32_t number, int shift) {
  return (number >> shift & 0xFU) * 17 / 255.0;
}

}  // namespace

ui::Color colorFromHex(std::string_view text) {
  const std::string_view digits = stripped(text);
  std::uint32_t number = 0;
  (void)std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
  switch (std::ranges::count_if(digits, [](char c) { return !isContinuation(c); })) {
    case 8:
      return {component(number, 16), component(number, 8), component(number, 0), component(number, 24)};
    case 6:
      return {component(number, 16), component(number, 8), component(number, 0), 1};
    case 3:
      return {digit(number, 8), digit(number, 4), digit(number, 0), 1};
    default:
      return ui::Color::black();
  }
}

}  // namespace VorselKelp
