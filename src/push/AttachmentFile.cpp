#include "push/AttachmentFile.h"

#include <cstddef>
#include <utility>

namespace VorselKelp {
namespace {

constexpr std::size_t pieceSize = std::size_t{64} << 10;

std::string uniqueName(platform::Random& random) {
  constexpr std::string_view alphabet = "0123456789abcdef";
  std::string name;
  for (int i = 0; i < 24; ++i) name += alphabet[random.below(16)];
  return name;
}

}  // namespace

Status AttachmentFile::open() {
  if (failure_) return *failure_;
  if (writer_) return Done{};
  auto& files = *services_->fileManager;
  folder_ = files.temporaryDirectory() + "/vorsel-attachment-" + uniqueName(*services_->random);
  auto writer = files.makeWriter(folder_);
  if (!writer) {
    failure_ = writer.error();
    remove();
    return *failure_;
  }
  writer_ = *std::move(writer);
  return Done{};
}

void AttachmentFile::append(std::string_view piece) {
  if (!open()) return;
  if (const auto written = writer_->append(piece); !written) {
    failure_ = written.error();
    remove();
  }
}

Result<platform::ImageInfo> AttachmentFile::inspect(std::int64_t pixelLimit) {
  if (const auto opened = open(); !opened) return opened.error();
  std::size_t offset = 0;
  Result<std::string> piece = std::string();
  const auto next = [&]() -> std::string_view {
    piece = writer_->read(offset, pieceSize);
    if (!piece) return {};
    offset += piece->size();
    return *piece;
  };
  auto image = services_->imageDecoder->inspectPieces(next, pixelLimit);
  return piece ? image : piece.error();
}

Result<std::string> AttachmentFile::keep(const std::string& name) {
  if (const auto opened = open(); !opened) return opened.error();
  std::string path = folder_ + "/" + name;
  if (const auto committed = writer_->commit(path); !committed) return committed.error();
  folder_.clear();
  return path;
}

void AttachmentFile::remove() {
  writer_ = nullptr;
  if (!folder_.empty()) (void)services_->fileManager->removeItem(folder_);
  folder_.clear();
}

}  // namespace VorselKelp
