#include "content_ext/ImageCache.h"

#include <iterator>
#include <utility>

namespace VorselKelp {
namespace {

std::size_t bytesOf(const ui::Image& image) {
  return image.pixels().size() + (image.animation() ? image.animation()->size() : 0);
}

}  // namespace

ui::ImagePtr ImageCache::find(const std::string& url) {
  const auto found = places_.find(url);
  if (found == places_.end()) return nullptr;
  entries_.splice(entries_.begin(), entries_, found->second);
  return found->second->image;
}

void ImageCache::keep(const std::string& url, ui::ImagePtr image) {
  insert(url, std::move(image));
  while (used_ > budget_ && entries_.size() > 1) remove(std::prev(entries_.end()));
}

void ImageCache::keepIfRoom(const std::string& url, ui::ImagePtr image) {
  if (used_ + bytesOf(*image) <= budget_) insert(url, std::move(image));
}

void ImageCache::insert(const std::string& url, ui::ImagePtr image) {
  if (const auto known = places_.find(url); known != places_.end()) remove(known->second);
  used_ += bytesOf(*image);
  entries_.push_front({url, std::move(image)});
  places_[url] = entries_.begin();
}

void ImageCache::remove(std::list<Entry>::iterator entry) {
  used_ -= bytesOf(*entry->image);
  places_.erase(entry->url);
  entries_.erase(entry);
}

}  // namespace VorselKelp
