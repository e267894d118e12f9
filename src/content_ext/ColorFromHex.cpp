#include "content_ext/ColorFromHex.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace VorselKelp {
namespace {

/// Bytes above 127 belong to letters of other alphabets.
bool isAlphanumeric(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c & 0x80) != 0;
}

std::string_view stripped(std::string_view text) {
  const auto begin = std::ranges::find_if(text, isAlphanumeric);
  auto end = text.end();
  while (end != begin && !isAlphanumeric(*(end - 1))) --end;
  return {begin, end};
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
  switch (std::ranges::count_if(digits, [](char c) { return (c & 0xC0) != 0x80; })) {
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
