#pragma once

#include <string>
#include <string_view>

#include "VorselKelp/Result.h"
#include "VorselKelp/platform/FunctionRef.h"
#include "image/PixbufLibrary.h"

namespace VorselKelp::posix {

/// A loader of gdk-pixbuf while one picture goes through it.
class PixbufLoading {
 public:
  explicit PixbufLoading(const PixbufLibrary& library) : library_(library), loader_(library.loaderNew()) {}
  ~PixbufLoading();
  PixbufLoading(const PixbufLoading&) = delete;
  PixbufLoading& operator=(const PixbufLoading&) = delete;

  void connect(const char* signal, GCallback callback, void* data);

  /// Feeds `bytes` until they end, are refused, or `enough` says so.
  void feed(std::string_view bytes, platform::FunctionRef<bool()> enough);
  /// No more bytes follow: a small picture is kept back until then.
  void close();

  /// Makes the loader stop before it allocates pixels. While it tells the picture's size.
  void refuse() { library_.loaderSetSize(loader_, 0, 0); }
  void setSize(int width, int height) { library_.loaderSetSize(loader_, width, height); }

  /// What was decoded so far; null for nothing. The loader's.
  [[nodiscard]] GdkPixbuf* pixbuf() const { return library_.loaderPixbuf(loader_); }
  /// The first complaint; empty while there was none.
  [[nodiscard]] const std::string& problem() const { return problem_; }
  /// The usual file name extension of the format; empty while it is not known.
  [[nodiscard]] std::string extension() const;

 private:
  void note(GError* error);

  const PixbufLibrary& library_;
  GdkPixbufLoader* loader_;
  bool closed_ = false;
  std::string problem_;
};

/// A picture's size when it can't be shown: why.
Error unusableSize(int width, int height);

}  // namespace VorselKelp::posix
