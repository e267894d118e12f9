#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace VorselKelp::testing_support {

inline std::string bigEndian(std::uint32_t number, int bytes = 4) {
  std::string text;
  for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) text += static_cast<char>(number >> shift & 0xff);
  return text;
}

inline std::string littleEndian(std::uint32_t number, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(number >> 8 * i & 0xff);
  return text;
}

inline std::string pngChunk(const std::string& type, const std::string& data) {
  std::uint32_t crc = 0xffffffff;
  for (const char c : type + data) {
    crc ^= static_cast<unsigned char>(c);
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xedb88320u : 0u);
  }
  return bigEndian(static_cast<std::uint32_t>(data.size())) + type + data + bigEndian(~crc);
}

/// An uncompressed PNG of three or four bytes a pixel, below 64 KB. Its pixels may be fewer than it says.
inline std::string pngFile(int width, int height, int channels, const std::vector<std::uint8_t>& pixels) {
  const auto rowSize = static_cast<std::size_t>(width * channels);
  std::string rows;
  for (std::size_t at = 0; at < pixels.size(); at += rowSize) {
    rows += '\0';
    rows.append(reinterpret_cast<const char*>(&pixels[at]), rowSize);
  }
  std::uint32_t low = 1;
  std::uint32_t high = 0;
  for (const char c : rows) {
    low = (low + static_cast<unsigned char>(c)) % 65521;
    high = (high + low) % 65521;
  }
  const auto size = static_cast<std::uint32_t>(rows.size());
  const std::string header = bigEndian(static_cast<std::uint32_t>(width)) +
                             bigEndian(static_cast<std::uint32_t>(height)) + '\x08' +
                             (channels == 4 ? '\x06' : '\x02') + std::string(3, '\0');
  return "\x89PNG\r\n\x1a\n" + pngChunk("IHDR", header) +
         pngChunk("IDAT", "\x78\x01\x01" + littleEndian(size, 2) + littleEndian(~size, 2) + rows +
                              bigEndian(high << 16 | low)) +
         pngChunk("IEND", "");
}

/// A picture of nothing but middle grey: each block is one bit for "as bright as the one before" and one for
/// "no details". `frame` is the marker of the frame header.
inline std::string greyJpegFile(int width, int height, char frame = '\xc0') {
  const auto segment = [](char marker, const std::string& body) {
    return std::string("\xff") + marker + bigEndian(static_cast<std::uint32_t>(body.size() + 2), 2) + body;
  };
  const std::string codes = '\x01' + std::string(15, '\0') + '\0';
  const auto blocks = static_cast<std::size_t>((width + 7) / 8) * static_cast<std::size_t>((height + 7) / 8);
  return "\xff\xd8" + segment('\xdb', '\0' + std::string(64, '\x01')) +
         segment(frame, '\x08' + bigEndian(static_cast<std::uint32_t>(height), 2) +
                            bigEndian(static_cast<std::uint32_t>(width), 2) + std::string("\1\1\x11\0", 4)) +
         segment('\xc4', '\x00' + codes + '\x10' + codes) +
         segment('\xda', std::string("\1\1\0\0\x3f\0", 6)) + std::string((blocks + 3) / 4, '\0') + "\xff\xd9";
}

/// A bitmap whose rows go from the bottom to the top. Its width is a multiple of four.
inline std::string bitmapFile(int width, int height, const std::vector<std::uint8_t>& pixels) {
  const auto size = static_cast<std::uint32_t>(pixels.size());
  return "BM" + littleEndian(size + 54, 4) + littleEndian(0, 4) + littleEndian(54, 4) + littleEndian(40, 4) +
         littleEndian(static_cast<std::uint32_t>(width), 4) +
         littleEndian(static_cast<std::uint32_t>(height), 4) + littleEndian(1, 2) + littleEndian(24, 2) +
         littleEndian(0, 4) + littleEndian(size, 4) + std::string(16, '\0') +
         std::string(pixels.begin(), pixels.end());
}

}  // namespace VorselKelp::testing_support
