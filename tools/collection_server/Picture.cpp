#include "collection_server/Picture.h"

#include <array>
#include <cstdint>

namespace collection_server {
namespace {

constexpr int width = 160;
constexpr int height = 90;
constexpr int horizon = 58;

using Colour = std::array<std::uint8_t, 3>;

void appendNumber(std::string& bytes, std::uint32_t number) {
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(number >> shift & 0xff);
}

std::uint32_t checksum(std::string_view bytes) {
  std::uint32_t sum = 0xffffffff;
  for (const char c : bytes) {
    sum ^= static_cast<unsigned char>(c);
    for (int bit = 0; bit < 8; ++bit) sum = (sum & 1) != 0 ? sum >> 1 ^ 0xedb88320 : sum >> 1;
  }
  return ~sum;
}

void appendChunk(std::string& png, std::string_view type, std::string_view data) {
  appendNumber(png, static_cast<std::uint32_t>(data.size()));
  std::string body(type);
  body += data;
  png += body;
  appendNumber(png, checksum(body));
}

/// The zlib form of `data`, stored without compression.
std::string stored(std::string_view data) {
  std::string bytes("\x78\x01", 2);
  std::uint32_t a = 1;
  std::uint32_t b = 0;
  for (const char c : data) {
    a = (a + static_cast<unsigned char>(c)) % 65521;
    b = (b + a) % 65521;
  }
  while (!data.empty()) {
    const auto block = data.substr(0, 0xffff);
    data.remove_prefix(block.size());
    const auto size = static_cast<std::uint16_t>(block.size());
    bytes += static_cast<char>(data.empty() ? 1 : 0);
    for (const std::uint16_t part : {size, static_cast<std::uint16_t>(~size)}) {
      bytes += static_cast<char>(part & 0xff);
      bytes += static_cast<char>(part >> 8);
    }
    bytes += block;
  }
  appendNumber(bytes, b << 16 | a);
  return bytes;
}

Colour pixel(int x, int y, std::uint8_t tint) {
  const int dx = x - width / 2;
  const int dy = y - horizon;
  if (y < horizon && dx * dx + dy * dy < 24 * 24) return {255, 214, 90};
  const auto light = static_cast<std::uint8_t>(y * 2);
  if (y < horizon)
    return {static_cast<std::uint8_t>(tint / 2 + 60), static_cast<std::uint8_t>(90 + light), 230};
  const bool glitter = (x + 3 * y) % 11 < 2 && dx * dx < 30 * 30;
  return glitter ? Colour{250, 230, 160} : Colour{20, static_cast<std::uint8_t>(60 + tint / 4), 140};
}

}  // namespace

std::string drawPicture(std::string_view name) {
  const auto tint = static_cast<std::uint8_t>(checksum(name) & 0xff);
  std::string rows;
  for (int y = 0; y < height; ++y) {
    rows += '\0';  // no filter
    for (int x = 0; x < width; ++x) {
      for (const auto part : pixel(x, y, tint)) rows += static_cast<char>(part);
    }
  }
  std::string header;
  appendNumber(header, width);
  appendNumber(header, height);
  header += std::string("\x08\x02\x00\x00\x00", 5);  // eight bits, red green blue, not interlaced
  std::string png("\x89PNG\r\n\x1a\n", 8);
  appendChunk(png, "IHDR", header);
  appendChunk(png, "IDAT", stored(rows));
  appendChunk(png, "IEND", {});
  return png;
}

}  // namespace collection_server
