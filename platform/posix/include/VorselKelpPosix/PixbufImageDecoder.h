#pragma once

#include <memory>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/ImageDecoder.h"

namespace VorselKelp::posix {

struct ImageDecoderOptions {
  /// The shared library that does the work, loaded by the first picture.
  std::string libraryName = "libgdk_pixbuf-2.0.so.0";
  /// The one that reads animated GIF images, loaded by the first of them.
  std::string gifLibraryName = "libgif.so.7";
};

/// Recognises and decodes the formats for which the system has a gdk-pixbuf loader. When a library is
/// missing, every picture that needs it is answered with an error that says so.
[[nodiscard]] VORSELKELP_API std::shared_ptr<platform::ImageDecoder> makeImageDecoder(
    ImageDecoderOptions options = {});

}  // namespace VorselKelp::posix
