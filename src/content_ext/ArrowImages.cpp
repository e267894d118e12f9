#include "content_ext/ArrowImages.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"
#include "base/Url.h"
#include "content_ext/Stop.h"
#include "gif/ImageLoading.h"
#include "net/DownloadFailure.h"

namespace VorselKelp {
namespace {

// What file systems take at most, in bytes.
constexpr std::size_t longestComponent = 255;
constexpr std::size_t longestPath = 4095;

/// Where the picture of a URL is kept: the text names the file, and its slashes folders. The text is the
/// sender's, so it is refused when the file could be anywhere but inside the container.
Result<std::string> fileOf(const std::string& container, const std::string& urlText) {
  if (urlText.empty()) return Error{"an empty name"};
  if (std::ranges::any_of(urlText, isAsciiControl)) return Error{"a name with control characters"};
  const std::string name = urlText + ".jpg";
  for (std::size_t begin = 0; begin <= name.size();) {
    const auto end = std::min(name.find('/', begin), name.size());
    if (name.compare(begin, end - begin, "..") == 0) return Error{"a name that leads out of its folder"};
    if (end - begin > longestComponent) return Error{"a name too long for a file"};
    begin = end + 1;
  }
  std::string path = container + "/" + name;
  if (path.size() > longestPath) return Error{"a name too long for a file"};
  return path;
}

}  // namespace

void ArrowImages::setBuiltIn(std::string_view name, ui::Button& button) const {
  const auto bytes = context_->services->bundle->libraryResource(name);
  const auto image = bytes ? gif::decodeImage(*context_->services->imageDecoder, *bytes)
                           : Result<ui::ImagePtr>(Error{"not installed"});
  if (image) {
    button.backgroundImage = *image;
  } else {
    context_->print("No image " + std::string(name) + ": " + image.error().description);
  }
}

void ArrowImages::load(const std::string& urlText, const std::shared_ptr<ui::Button>& button,
                       const std::string& whose) {
  const auto folder = container();
  if (!folder) return;
  if (auto image = kept(*folder, urlText)) return setLater(button, std::move(image));
  download(urlText, button);
  context_->print("No imagefound in documents from " + whose);
}

std::optional<std::string> ArrowImages::container() const {
  const auto identifier = context_->services->bundle->mainBundleText("CFBundleIdentifier");
  if (!identifier) stopCarousel("the bundle has no \"CFBundleIdentifier\"");
  return context_->services->fileManager->containerPath("group." + *identifier + ".vorselKellp");
}

ui::ImagePtr ArrowImages::kept(const std::string& container, const std::string& urlText) const {
  const auto file = fileOf(container, urlText);
  auto& files = *context_->services->fileManager;
  if (!file || !files.fileExists(*file)) return nullptr;
  const auto bytes = files.readFile(*file, gif::pictureByteLimit);
  if (!bytes) return nullptr;
  auto image = gif::decodeImage(*context_->services->imageDecoder, *bytes);
  return image ? *std::move(image) : nullptr;
}

void ArrowImages::download(const std::string& urlText, const std::weak_ptr<ui::Button>& button) {
  if (!parseUrl(urlText)) return context_->print("FAILED TO SAVE IMAGE URL is not valid");
  requests_->download(urlText, gif::pictureByteLimit,
                      [self = shared_from_this(), urlText, button](const platform::URLResult& result) {
                        self->downloaded(urlText, result, button);
                      });
}

void ArrowImages::downloaded(const std::string& urlText, const platform::URLResult& result,
                             const std::weak_ptr<ui::Button>& button) const {
  if (const auto failure = failureOf(result); !failure.empty())
    return context_->print("FAILED TO SAVE IMAGE " + failure);
  auto image = gif::decodeImage(*context_->services->imageDecoder, *result.body);
  if (!image) return context_->print("FAILED TO SAVE IMAGE " + image.error().description);
  // What can't be kept can be shown all the same.
  save(urlText, *result.body);
  setLater(button, *std::move(image));
}

void ArrowImages::save(const std::string& urlText, const std::string& bytes) const {
  const auto folder = container();
  if (!folder) return context_->print("Cant find app gorups directory");
  const auto file = fileOf(*folder, urlText);
  const Status saved = file ? context_->services->fileManager->writeFile(*file, bytes) : Status(file.error());
  if (!saved) context_->print("FAILED TO SAVE IMAGE " + saved.error().description);
}

void ArrowImages::setLater(const std::weak_ptr<ui::Button>& button, ui::ImagePtr image) const {
  context_->services->mainQueue->async([button, image = std::move(image)] {
    if (const auto alive = button.lock()) alive->backgroundImage = image;
  });
}

}  // namespace VorselKelp
