#pragma once

#include <memory>
#include <string>

#include "VorselKelp/platform/ImageDecoder.h"

namespace VorselKelp::linux_platform {

struct ImageDecoderOptions {
  /// The shared library that does the work, loaded by the first picture.
  std::string libraryName = "libgdk_pixbuf-2.0.so.0";
};

/// Recognises the formats for which the system has a gdk-pixbuf loader. When the library is missing every
/// picture is answered with an error that says so.
[[nodiscard]] std::shared_ptr<platform::ImageDecoder> makeImageDecoder(ImageDecoderOptions options = {});

}  // namespace VorselKelp::linux_platform
