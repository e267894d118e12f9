#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "VorselKelp/platform/FunctionRef.h"

namespace VorselKelp::posix {

/// Leaves out of a JPEG or PNG, up to its pixels, what tells nothing of them: comments, texts, profiles,
/// previews. The libraries keep these in memory, and they may make up nearly the whole of a file. Other
/// formats pass as they are.
class MetadataFilter {
 public:
  using Pass = platform::FunctionRef<void(std::string_view)>;

  /// Takes the next piece of the file, of any size, and passes on what remains of it.
  void run(std::string_view piece, Pass pass);

 private:
  enum class Format { unknown, jpeg, png };

  void readHead(Pass pass);
  void readSignature(Pass pass);
  void readSegment(Pass pass);
  void readChunk(Pass pass);
  void beginPart(std::size_t size, bool dropped, Pass pass);

  Format format_ = Format::unknown;
  std::string head_;      // of the part that begins, as far as it has come
  std::size_t left_ = 0;  // bytes of the part after its head
  bool dropped_ = false;
};

}  // namespace VorselKelp::posix
