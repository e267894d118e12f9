#include "VorselKelpWebPush/Base64Url.h"

#include <cstdint>

namespace VorselKelp::webpush {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

}  // namespace

std::string toBase64Url(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() * 4 + 2) / 3);
  std::uint32_t bits = 0;
  unsigned waiting = 0;
  for (const char byte : bytes) {
    bits = bits << 8 | static_cast<unsigned char>(byte);
    for (waiting += 8; waiting >= 6; waiting -= 6) text += alphabet[bits >> (waiting - 6) & 63];
  }
  if (waiting > 0) text += alphabet[bits << (6 - waiting) & 63];
  return text;
}

Result<std::string> fromBase64Url(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size() * 3 / 4);
  std::uint32_t bits = 0;
  unsigned waiting = 0;
  for (const char c : text) {
    const auto value = alphabet.find(c);
    if (value == std::string_view::npos)
      return Error{"is no base64url: of letters, digits, \"-\" and \"_\" alone"};
    bits = bits << 6 | static_cast<std::uint32_t>(value);
    waiting += 6;
    if (waiting < 8) continue;
    waiting -= 8;
    bytes += static_cast<char>(bits >> waiting);
  }
  // What is left over of the last character says nothing, and stands as zeros.
  if (waiting >= 6 || (bits & ((1U << waiting) - 1)) != 0)
    return Error{"is no base64url: its end is missing"};
  return bytes;
}

}  // namespace VorselKelp::webpush
