#include "image/GifLibrary.h"

namespace VorselKelp::posix {

GifLibrary::GifLibrary(const std::string& name) : library_(name) {
  library_.find(open, "DGifOpen");
  library_.find(close, "DGifCloseFile");
  library_.find(recordType, "DGifGetRecordType");
  library_.find(imageHeader, "DGifGetImageHeader");
  library_.find(line, "DGifGetLine");
  library_.find(codeNext, "DGifGetCodeNext");
  library_.find(extension, "DGifGetExtension");
  library_.find(extensionNext, "DGifGetExtensionNext");
  library_.find(errorText, "GifErrorString");
}

}  // namespace VorselKelp::posix
