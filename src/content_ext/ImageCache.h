#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <unordered_map>

#include "VorselKelp/ui/Image.h"

namespace VorselKelp {

/// Decoded pictures by the text of their URL, within a budget of bytes. Whoever shares it between threads
/// locks it.
///
/// The system ends an extension that takes too much memory, so there are carousels that don't fit. What is
/// then missing is downloaded again when its message is shown.
class ImageCache {
 public:
  /// A dozen pictures of 1000 × 600 pixels.
  static constexpr std::size_t defaultBudget = std::size_t{32} << 20;

  explicit ImageCache(std::size_t budget = defaultBudget) : budget_(budget) {}
  ImageCache(const ImageCache&) = delete;
  ImageCache& operator=(const ImageCache&) = delete;

  /// Null when it is not there. What was asked for last stays longest.
  [[nodiscard]] ui::ImagePtr find(const std::string& url);
  /// Keeps a picture that is being shown: those not asked for longest make room. It stays even when it is
  /// larger than the whole budget, or it would be downloaded for every layout pass.
  void keep(const std::string& url, ui::ImagePtr image);
  /// Keeps a picture for later if there is room: those fetched first are needed first.
  void keepIfRoom(const std::string& url, ui::ImagePtr image);

 private:
  struct Entry {
    std::string url;
    ui::ImagePtr image;
  };
  void insert(const std::string& url, ui::ImagePtr image);
  void remove(std::list<Entry>::iterator entry);

  const std::size_t budget_;
  std::size_t used_ = 0;
  std::list<Entry> entries_;  ///< asked for last comes first
  std::unordered_map<std::string, std::list<Entry>::iterator> places_;
};

}  // namespace VorselKelp
