#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "VorselKelp/platform/Platform.h"

namespace VorselKelp {

/// The file of an attachment, which is written while its bytes come in. It has a folder of its own among the
/// process's passing files; file and folder are removed with the object unless the file was kept.
///
/// Any thread, one at a time.
class AttachmentFile {
 public:
  explicit AttachmentFile(std::shared_ptr<platform::Platform> services) : services_(std::move(services)) {}
  ~AttachmentFile() { remove(); }
  AttachmentFile(const AttachmentFile&) = delete;
  AttachmentFile& operator=(const AttachmentFile&) = delete;

  /// Where writing fails, what there is of the file goes at once, and the bytes that follow are dropped; the
  /// error is told by what comes afterwards.
  void append(std::string_view piece);

  /// Looks at the file as a picture, never at more than a small piece of it at a time.
  [[nodiscard]] Result<platform::ImageInfo> inspect(std::int64_t pixelLimit);

  /// Gives the file its name, which must be safe to use, and leaves it to the caller: returns its path.
  [[nodiscard]] Result<std::string> keep(const std::string& name);

 private:
  Status open();
  void remove();

  const std::shared_ptr<platform::Platform> services_;
  std::string folder_;  // empty while there is none
  std::unique_ptr<platform::FileWriter> writer_;
  std::optional<Error> failure_;
};

}  // namespace VorselKelp
