#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "core/CoreContext.h"
#include "net/VorselRequest.h"
#include "push/AttachmentFile.h"

namespace VorselKelp {

/// Downloads a picture and makes a notification's attachment of it.
class ImageAttachment : public std::enable_shared_from_this<ImageAttachment> {
 public:
  /// Takes the attachment, whose file is the receiver's now, or nothing: then the console says why.
  using Finish = std::function<void(std::optional<platform::NotificationAttachment>)>;

  ImageAttachment(std::shared_ptr<CoreContext> context, std::shared_ptr<VorselRequest> requests)
      : context_(std::move(context)), requests_(std::move(requests)) {}

  /// Calls `finish` exactly once: on the main queue, or on the calling thread when `url` is none.
  void fetch(const std::string& url, Finish finish);
  /// Removes the file of an attachment that nobody wants any more.
  void discard(const platform::NotificationAttachment& attachment);

 private:
  void downloaded(const platform::URLResult& result, std::shared_ptr<AttachmentFile> file,
                  const std::string& url, const Finish& finish);
  /// Main queue.
  [[nodiscard]] std::optional<platform::NotificationAttachment> attach(AttachmentFile& file,
                                                                       const std::string& name);

  std::shared_ptr<CoreContext> context_;
  std::shared_ptr<VorselRequest> requests_;
};

}  // namespace VorselKelp
