#include "image/JpegStructure.h"

#include <cstddef>
#include <optional>

namespace VorselKelp::posix {
namespace {

constexpr unsigned startOfScan = 0xDA;

unsigned byteAt(std::string_view bytes, std::size_t at) {
  return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

bool isFrameHeader(unsigned marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

bool isSequential(unsigned marker) {
  return marker == 0xC0 || marker == 0xC1;
}

}  // namespace

bool isSingleScanJpeg(std::string_view bytes) {
  std::optional<unsigned> components;
  std::size_t at = 2;
  while (at + 4 <= bytes.size() && byteAt(bytes, at) == 0xFF) {
    const unsigned marker = byteAt(bytes, at + 1);
    if (marker == 0xFF) {  // filling
      ++at;
      continue;
    }
    const std::size_t body = at + 4;
    if (marker == startOfScan) return components && byteAt(bytes, body) == *components;
    if (isFrameHeader(marker)) {
      if (!isSequential(marker)) return false;
      components = byteAt(bytes, body + 5);
    }
    at += 2 + (byteAt(bytes, at + 2) << 8 | byteAt(bytes, at + 3));
  }
  return false;
}

}  // namespace VorselKelp::posix
