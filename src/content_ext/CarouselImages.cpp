#include "content_ext/CarouselImages.h"

#include <utility>

#include "gif/ImageLoading.h"
#include "net/DownloadFailure.h"

namespace VorselKelp {

CarouselImages::CarouselImages(std::shared_ptr<CoreContext> context, std::shared_ptr<VorselRequest> requests,
                               std::weak_ptr<ui::ImageView> view)
    : context_(std::move(context)),
      requests_(std::move(requests)),
      animations_(gif::GifManager::of(*context_)),
      view_(std::move(view)) {}

void CarouselImages::prefetch(const std::string& url) {
  {
    const std::lock_guard lock(mutex_);
    if (cache_.find(url) || !begin(url, false)) return;
  }
  download(url);
}

void CarouselImages::show(const std::string& url) {
  const auto view = view_.lock();
  if (!view) return;
  ui::ImagePtr image;
  bool missing = false, unusable = false;
  {
    const std::lock_guard lock(mutex_);
    current_ = url;
    if (presented_ == url && view->image.get()) return;
    unusable = unusable_.contains(url);
    image = cache_.find(url);
    missing = !image && begin(url, true);
  }
  if (image || unusable) return present(url, std::move(image));
  if (missing) download(url);
}

ui::ImagePtr CarouselImages::cached(const std::string& url) {
  const std::lock_guard lock(mutex_);
  return cache_.find(url);
}

bool CarouselImages::begin(const std::string& url, bool shown) {
  if (unusable_.contains(url)) return false;
  const auto [entry, isNew] = underWay_.try_emplace(url, shown);
  entry->second |= shown;
  return isNew;
}

void CarouselImages::download(const std::string& url) {
  requests_->download(url, gif::pictureByteLimit, [weak = weak_from_this(), url](platform::URLResult result) {
    if (const auto self = weak.lock()) self->downloaded(url, result);
  });
}

void CarouselImages::downloaded(const std::string& url, const platform::URLResult& result) {
  if (!failureOf(result).empty()) {
    if (finish(url, nullptr)) context_->print("Image cant download from G+ or fb server");
    return;
  }
  // Decoded here, on the session's queue: a large picture takes longer than a frame of the screen.
  auto image = gif::decodeImage(*context_->services->imageDecoder, *result.body);
  if (!image) {
    {
      const std::lock_guard lock(mutex_);
      unusable_.insert(url);
    }
    finish(url, nullptr);
  } else {
    finish(url, *image);
  }
  // What waits for the main thread counts for no budget, so it is only ever what that thread is to show.
  if (!isCurrent(url)) return;
  context_->services->mainQueue->async(
      [weak = weak_from_this(), url, arrived = image ? *std::move(image) : ui::ImagePtr()] {
        const auto self = weak.lock();
        if (self && self->isCurrent(url)) self->present(url, arrived);  // the user may have paged on
      });
}

bool CarouselImages::finish(const std::string& url, const ui::ImagePtr& image) {
  const std::lock_guard lock(mutex_);
  const auto entry = underWay_.find(url);
  const bool shown = entry != underWay_.end() && entry->second;
  if (entry != underWay_.end()) underWay_.erase(entry);
  if (image && shown) cache_.keep(url, image);
  if (image && !shown) cache_.keepIfRoom(url, image);
  return shown;
}

bool CarouselImages::isCurrent(const std::string& url) {
  const std::lock_guard lock(mutex_);
  return current_ == url;
}

void CarouselImages::present(const std::string& url, ui::ImagePtr image) {
  presented_ = url;
  if (const auto view = view_.lock()) animations_->show(view, std::move(image));
}

}  // namespace VorselKelp
