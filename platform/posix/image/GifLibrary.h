#pragma once

#include <gif_lib.h>

#include <string>

#include "support/DynamicLibrary.h"

namespace VorselKelp::posix {

/// The functions of giflib that are used here, found at run time.
class GifLibrary {
 public:
  explicit GifLibrary(const std::string& name);

  /// Why there is no giflib, empty when there is.
  [[nodiscard]] const std::string& error() const { return library_.error(); }

  decltype(DGifOpen)* open = nullptr;
  decltype(DGifCloseFile)* close = nullptr;
  decltype(DGifGetRecordType)* recordType = nullptr;
  /// The image descriptor alone: its sibling DGifGetImageDesc also collects every frame's in memory.
  decltype(DGifGetImageHeader)* imageHeader = nullptr;
  decltype(DGifGetLine)* line = nullptr;
  decltype(DGifGetCodeNext)* codeNext = nullptr;
  decltype(DGifGetExtension)* extension = nullptr;
  decltype(DGifGetExtensionNext)* extensionNext = nullptr;
  decltype(GifErrorString)* errorText = nullptr;

 private:
  DynamicLibrary library_;
};

}  // namespace VorselKelp::posix
