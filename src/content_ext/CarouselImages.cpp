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
    if (cache_.find(url) || !begin(url, Fetch::ahead)) return;
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
    if (inView_ == url && view->image.get()) return;
    image = cache_.find(url);
    missing = !image && begin(url, Fetch::awaited);
    unusable = !image && fetches_.at(url) == Fetch::unusable;
  }
  if (image || unusable) return present(url, std::move(image));
  if (missing) download(url);
}

ui::ImagePtr CarouselImages::cached(const std::string& url) {
  const std::lock_guard lock(mutex_);
  return cache_.find(url);
}

bool CarouselImages::begin(const std::string& url, Fetch why) {
  const auto [entry, isNew] = fetches_.try_emplace(url, why);
  if (entry->second == Fetch::ahead) entry->second = why;
  return isNew;
}

void CarouselImages::download(const std::string& url) {
  requests_->download(url, gif::pictureByteLimit, [weak = weak_from_this(), url](platform::URLResult result) {
    if (const auto self = weak.lock()) self->downloaded(url, result);
  });
}

void CarouselImages::downloaded(const std::string& url, const platform::URLResult& result) {
  if (!failureOf(result).empty()) {
    if (fail(url)) context_->print("Image cant download from G+ or fb server");
    return;
  }
  // Decoded here, on the session's queue: a large picture takes longer than a frame of the screen.
  auto image = gif::decodeImage(*context_->services->imageDecoder, *result.body);
  keep(url, image ? *image : ui::ImagePtr());
  // What waits for the main thread counts for no budget, so it is only ever what that thread is to show.
  if (!isCurrent(url)) return;
  context_->services->mainQueue->async(
      [weak = weak_from_this(), url, arrived = image ? *std::move(image) : ui::ImagePtr()] {
        const auto self = weak.lock();
        if (self && self->isCurrent(url)) self->present(url, arrived);  // the user may have paged on
      });
}

bool CarouselImages::fail(const std::string& url) {
  const std::lock_guard lock(mutex_);
  const auto fetch = fetches_.extract(url);
  return fetch && fetch.mapped() == Fetch::awaited;
}

void CarouselImages::keep(const std::string& url, const ui::ImagePtr& image) {
  const std::lock_guard lock(mutex_);
  auto& fetch = fetches_[url];
  if (!image) {
    fetch = Fetch::unusable;
    return;
  }
  if (fetch == Fetch::awaited) {
    cache_.keep(url, image);
  } else {
    cache_.keepIfRoom(url, image);
  }
  fetches_.erase(url);
}

bool CarouselImages::isCurrent(const std::string& url) {
  const std::lock_guard lock(mutex_);
  return current_ == url;
}

void CarouselImages::present(const std::string& url, ui::ImagePtr image) {
  inView_ = url;
  if (const auto view = view_.lock()) animations_->show(view, std::move(image));
}

}  // namespace VorselKelp
