#include "image/MetadataFilter.h"

#include <algorithm>
#include <limits>

namespace VorselKelp::posix {
namespace {

using namespace std::string_view_literals;

constexpr auto pngSignature = "\x89PNG\r\n\x1a\n"sv;
constexpr auto jpegSignature = "\xff\xd8"sv;
constexpr std::size_t endless = std::numeric_limits<std::size_t>::max();

std::size_t bigEndian(std::string_view bytes) {
  std::size_t value = 0;
  for (const char byte : bytes) value = value << 8 | static_cast<unsigned char>(byte);
  return value;
}

}  // namespace

void MetadataFilter::run(std::string_view piece, Pass pass) {
  while (!piece.empty()) {
    if (left_ == 0) {
      head_ += piece.front();
      piece.remove_prefix(1);
      readHead(pass);
      continue;
    }
    const auto part = piece.substr(0, left_);
    if (!dropped_) pass(part);
    if (left_ != endless) left_ -= part.size();
    piece.remove_prefix(part.size());
  }
}

void MetadataFilter::readHead(Pass pass) {
  switch (format_) {
    case Format::unknown:
      return readSignature(pass);
    case Format::jpeg:
      return readSegment(pass);
    case Format::png:
      return readChunk(pass);
  }
}

void MetadataFilter::readSignature(Pass pass) {
  if (head_ == jpegSignature || head_ == pngSignature) {
    format_ = head_ == jpegSignature ? Format::jpeg : Format::png;
    beginPart(0, false, pass);
  } else if (!pngSignature.starts_with(head_) && !jpegSignature.starts_with(head_)) {
    beginPart(endless, false, pass);
  }
}

/// A byte 0xFF, the segment's kind, and its length, which counts itself. What stands between segments is
/// skipped, as the libraries do.
void MetadataFilter::readSegment(Pass pass) {
  if (head_.front() != '\xff') head_.clear();
  if (head_.size() < 2) return;
  const auto kind = static_cast<unsigned char>(head_[1]);
  const bool endOfHeader = kind == 0xd9 || kind == 0xda;
  const bool lengthless = kind == 0x01 || (kind >= 0xd0 && kind <= 0xd8);
  if (kind == 0xff) {
    head_.pop_back();
  } else if (kind == 0) {
    head_.clear();
  } else if (endOfHeader || lengthless) {
    beginPart(endOfHeader ? endless : 0, false, pass);
  } else if (head_.size() == 4) {
    const auto length = bigEndian(std::string_view(head_).substr(2));
    const bool metadata = kind == 0xfe || (kind >= 0xe0 && kind <= 0xef);
    beginPart(length < 2 ? endless : length - 2, metadata && length >= 2, pass);
  }
}

/// The length of the content, and the chunk's kind, whose first letter is small when it can be done without.
/// After the content comes a checksum.
void MetadataFilter::readChunk(Pass pass) {
  if (head_.size() < 8) return;
  const auto length = bigEndian(std::string_view(head_).substr(0, 4));
  const auto kind = std::string_view(head_).substr(4);
  const bool endOfHeader = kind == "IDAT" || kind == "IEND";
  beginPart(endOfHeader ? endless : length + 4, (kind.front() & 0x20) != 0, pass);
}

void MetadataFilter::beginPart(std::size_t size, bool dropped, Pass pass) {
  left_ = size;
  dropped_ = dropped;
  if (!dropped) pass(head_);
  head_.clear();
}

}  // namespace VorselKelp::posix
