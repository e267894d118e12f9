#include "push/ImageAttachment.h"

#include <cstddef>
#include <cstdint>
#include <utility>

#include "base/Text.h"
#include "base/Url.h"
#include "net/DownloadFailure.h"

namespace VorselKelp {
namespace {

constexpr std::size_t imageLimit = std::size_t{10} << 20;
constexpr std::int64_t pixelLimit = std::int64_t{64} << 20;

/// The system tells a picture's kind by its file's name.
std::string withExtension(std::string name, const std::string& extension) {
  const std::string ending = "." + extension;
  return lowerCased(name).ends_with(ending) ? name : name + ending;
}

}  // namespace

void ImageAttachment::fetch(const std::string& url, Finish finish) {
  context_->print("Download Started");
  if (!parseUrl(url)) {
    context_->print("URL is not valid");
    finish(std::nullopt);
    return;
  }
  auto file = std::make_shared<AttachmentFile>(context_->services);
  // Where the disk refuses the picture, the answer is awaited all the same: it has the name that is printed.
  auto consumer = [file](std::string_view piece) -> Status {
    file->append(piece);
    return Done{};
  };
  requests_->download(url, imageLimit, std::move(consumer),
                      [self = shared_from_this(), file = std::move(file), url,
                       finish = std::move(finish)](const platform::URLResult& result) mutable {
                        self->downloaded(result, std::move(file), url, finish);
                      });
}

void ImageAttachment::downloaded(const platform::URLResult& result, std::shared_ptr<AttachmentFile> file,
                                 const std::string& url, const Finish& finish) {
  auto& queue = *context_->services->mainQueue;
  if (!failureOf(result).empty()) {
    file = nullptr;
    context_->print("Image can't be downloaded");
    queue.async([finish] { finish(std::nullopt); });
    return;
  }
  const std::string name = result.response->suggestedFilename.value_or(lastPathComponent(url));
  context_->print(name);
  context_->print("Download Finished");
  queue.async([self = shared_from_this(), file = std::move(file), name, finish]() mutable {
    auto attachment = self->attach(*file, name);
    file = nullptr;  // the process may end with what comes next
    finish(std::move(attachment));
  });
}

std::optional<platform::NotificationAttachment> ImageAttachment::attach(AttachmentFile& file,
                                                                        const std::string& name) {
  const auto failed = [this](const Error& error) {
    context_->print("Image can't be attached: " + error.description);
    return std::nullopt;
  };
  const auto image = file.inspect(pixelLimit);
  if (!image) return failed(image.error());
  const auto path = file.keep(withExtension(safeFileName(name), image->fileExtension));
  if (!path) return failed(path.error());
  return platform::NotificationAttachment{"image", *path};
}

void ImageAttachment::discard(const platform::NotificationAttachment& attachment) {
  (void)context_->services->fileManager->removeItem(attachment.path.substr(0, attachment.path.rfind('/')));
}

}  // namespace VorselKelp
