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

void ImageAttachment::fetch(const std::string& url, Finish finish) {
  context_->print("Download Started");
  if (!parseUrl(url)) {
    context_->print("URL is not valid");
    finish(std::nullopt);
    return;
  }
  requests_->download(url, imageLimit,
                      [self = shared_from_this(), url, finish = std::move(finish)](
                          platform::URLResult result) { self->downloaded(std::move(result), url, finish); });
}

void ImageAttachment::downloaded(platform::URLResult result, const std::string& url, const Finish& finish) {
  auto& queue = *context_->services->mainQueue;
  if (result.error || !result.body || !result.response) {
    context_->print("Image can't be downloaded");
    queue.async([finish] { finish(std::nullopt); });
    return;
  }
  const std::string name = result.response->suggestedFilename.value_or(lastPathComponent(url));
  context_->print(name);
  context_->print("Download Finished");
  queue.async([self = shared_from_this(), bytes = *std::move(result.body), name, finish] {
    finish(self->write(bytes, name));
  });
}

std::optional<platform::NotificationAttachment> ImageAttachment::write(const std::string& bytes,
                                                                       const std::string& name) {
  const auto& services = *context_->services;
  const auto failed = [this](const Error& error) {
    context_->print("Image can't be attached: " + error.description);
    return std::nullopt;
  };
  const auto image = services.imageDecoder->inspect(bytes, pixelLimit);
  if (!image) return failed(image.error());
  const std::string folder =
      services.fileManager->temporaryDirectory() + "/vorsel-attachment-" + uniqueName(*services.random);
  const std::string path = folder + "/" + withExtension(safeFileName(name), image->fileExtension);
  if (const auto written = services.fileManager->writeFile(path, bytes); !written) {
    (void)services.fileManager->removeItem(folder);
    return failed(written.error());
  }
  return platform::NotificationAttachment{"image", path};
}

void ImageAttachment::discard(const platform::NotificationAttachment& attachment) {
  (void)context_->services->fileManager->removeItem(attachment.path.substr(0, attachment.path.rfind('/')));
}

}  // namespace VorselKelp
