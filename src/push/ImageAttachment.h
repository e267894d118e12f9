#pragma once

#include <functional>
#include <memory>
#include <string>

#include "core/CoreContext.h"
#include "net/VorselRequest.h"

namespace VorselKelp {

/// Downloads a picture and attaches it to a notification that is being prepared.
class ImageAttachment : public std::enable_shared_from_this<ImageAttachment> {
 public:
  ImageAttachment(std::shared_ptr<CoreContext> context, std::shared_ptr<VorselRequest> requests)
      : context_(std::move(context)), requests_(std::move(requests)) {}

  /// Attaches the picture behind `url` to `content` when that succeeds, and calls `finish` exactly once in
  /// any case: on the main queue, or on the calling thread when `url` is none.
  void attach(const std::string& url, std::shared_ptr<platform::NotificationContent> content,
              std::function<void()> finish);

 private:
  void downloaded(const platform::URLResult& result, const std::string& url,
                  const std::shared_ptr<platform::NotificationContent>& content,
                  const std::function<void()>& finish);
  /// Main queue.
  Status write(const std::string& bytes, const std::string& name, platform::NotificationContent& content);

  std::shared_ptr<CoreContext> context_;
  std::shared_ptr<VorselRequest> requests_;
};

}  // namespace VorselKelp
