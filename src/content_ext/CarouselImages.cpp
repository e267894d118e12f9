#include "content_ext/CarouselImages.h"

#include <utility>

#include "gif/ImageLoading.h"

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
  const bool changed = std::exchange(current_, url) != url;
  if (!changed && view->image.get()) return;
  ui::ImagePtr image;
  bool missing = false;
  {
    const std::lock_guard lock(mutex_);
    image = cache_.find(url);
    missing = !image && begin(url, true);
  }
  if (image) return present(std::move(image));
  // The picture of another message would be taken for this one's.
  if (changed) present(nullptr);
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
  requests_->download(url, pictureByteLimit, [weak = weak_from_this(), url](platform::URLResult result) {
    if (const auto self = weak.lock()) self->downloaded(url, result);
  });
}

void CarouselImages::downloaded(const std::string& url, const platform::URLResult& result) {
  if (result.error || !result.body) {
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
    context_->print("Image can't be shown: " + image.error().description);
    return;
  }
  finish(url, *image);
  context_->services->mainQueue->async([weak = weak_from_this(), url, arrived = *std::move(image)] {
    // The user may have paged on: a picture that comes late is kept, and shown only if its message still is.
    const auto self = weak.lock();
    if (self && self->current_ == url) self->present(arrived);
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

void CarouselImages::present(ui::ImagePtr image) {
  if (const auto view = view_.lock()) animations_->show(view, std::move(image));
}

}  // namespace VorselKelp
