#pragma once

#include <optional>
#include <string>

#include "ads/AdRecords.h"

namespace VorselKelp {

/// The title of an ad-only push: the ad's, else the push's, and never an empty one.
[[nodiscard]] inline std::string adTitle(const std::optional<AdexObject>& ad, const std::string& pushTitle) {
  const Md* creative = ad ? ad->creative() : nullptr;
  std::string title = creative && creative->title ? *creative->title : pushTitle;
  return title.empty() ? "No title" : title;
}

/// The URL of an ad's picture.
[[nodiscard]] inline std::optional<std::string> adImage(const std::optional<AdexObject>& ad) {
  const Md* creative = ad ? ad->creative() : nullptr;
  return creative ? creative->img : std::nullopt;
}

}  // namespace VorselKelp
