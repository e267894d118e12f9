#include "image/PixbufLoading.h"

#include <utility>

namespace VorselKelp::posix {
namespace {

// Loaders copy what they have not used yet, so that large pieces take time that grows with their square.
constexpr std::size_t pieceSize = std::size_t{16} << 10;

}  // namespace

PixbufLoading::~PixbufLoading() {
  close();
  library_.unref(loader_);
}

void PixbufLoading::connect(const char* signal, GCallback callback, void* data) {
  library_.signalConnect(loader_, signal, callback, data, nullptr, GConnectFlags{});
}

void PixbufLoading::feed(std::string_view bytes, platform::FunctionRef<bool()> enough) {
  bool fed = true;
  for (std::size_t at = 0; fed && !enough() && at < bytes.size(); at += pieceSize) {
    const auto piece = bytes.substr(at, pieceSize);
    GError* error = nullptr;
    fed = library_.loaderWrite(loader_, reinterpret_cast<const guchar*>(piece.data()), piece.size(), &error);
    note(error);
  }
}

void PixbufLoading::close() {
  if (std::exchange(closed_, true)) return;
  GError* error = nullptr;
  library_.loaderClose(loader_, &error);
  note(error);
}

std::string PixbufLoading::extension() const {
  GdkPixbufFormat* format = library_.loaderFormat(loader_);
  gchar** extensions = format ? library_.formatExtensions(format) : nullptr;
  std::string first = extensions && extensions[0] ? extensions[0] : "";
  library_.textsFree(extensions);
  return first == "jpeg" ? "jpg" : first;
}

void PixbufLoading::note(GError* error) {
  if (!error) return;
  if (problem_.empty()) problem_ = error->message;
  library_.errorFree(error);
}

Error unusableSize(int width, int height) {
  if (width <= 0 || height <= 0) return Error{"a picture without a size"};
  return Error{"a picture of " + std::to_string(width) + " by " + std::to_string(height) +
               " pixels is too large"};
}

}  // namespace VorselKelp::posix
