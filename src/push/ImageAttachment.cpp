#include "push/ImageAttachment.h"

#include <cstddef>
#include <cstdint>
#include <utility>

#include "base/Text.h"
#include "base/Url.h"

namespace VorselKelp {
namespace {

constexpr std::size_t imageLimit = std::size_t{10} << 20;
constexpr std::int64_t pixelLimit = std::int64_t{64} << 20;

std::string uniqueName(platform::Random& random) {
  constexpr std::string_view alphabet = "0123456789abcdef";
  std::string name;
  for (int i = 0; i < 24; ++i) name += alphabet[random.below(16)];
  return name;
}

/// The system tells a picture's kind by its file's name.
std::string withExtension(std::string name, const std::string& extension) {
  const std::string ending = "." + extension;
  return lowerCased(name).ends_with(ending) ? name : name + ending;
}

}  // namespace

void ImageAttachment::attach(const std::string& url, std::shared_ptr<platform::NotificationContent> content,
                             std::function<void()> finish) {
  context_->print("Download Started");
  if (!parseUrl(url)) {
    context_->print("URL is not valid");
    finish();
    return;
  }
  requests_->download(
      url, imageLimit,
      [self = shared_from_this(), url, content = std::move(content), finish = std::move(finish)](
          const platform::URLResult& result) { self->downloaded(result, url, content, finish); });
}

void ImageAttachment::downloaded(const platform::URLResult& result, const std::string& url,
                                 const std::shared_ptr<platform::NotificationContent>& content,
                                 const std::function<void()>& finish) {
  auto& queue = *context_->services->mainQueue;
  if (result.error || !result.body || !result.response) {
    context_->print("Image can't be downloaded");
    queue.async([finish] { finish(); });
    return;
  }
  const std::string name = result.response->suggestedFilename.value_or(lastPathComponent(url));
  context_->print(name);
  context_->print("Download Finished");
  queue.async([self = shared_from_this(), bytes = *result.body, name, content, finish] {
    if (const auto written = self->write(bytes, name, *content); !written)
      self->context_->print("Image can't be attached: " + written.error().description);
    finish();
  });
}

Status ImageAttachment::write(const std::string& bytes, const std::string& name,
                              platform::NotificationContent& content) {
  const auto& services = *context_->services;
  const auto image = services.imageDecoder->inspect(bytes, pixelLimit);
  if (!image) return image.error();
  const std::string folder =
      services.fileManager->temporaryDirectory() + "/vorsel-attachment-" + uniqueName(*services.random);
  const std::string path = folder + "/" + withExtension(safeFileName(name), image->fileExtension);
  auto written = services.fileManager->writeFile(path, bytes);
  if (written) content.attachments.push_back({"image", path});
  return written;
}

}  // namespace VorselKelp
