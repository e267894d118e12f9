#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "VorselKelp/platform/NotificationCenter.h"

namespace VorselKelp::system {

using CategoryMap = std::map<std::string, platform::NotificationCategory, std::less<>>;

/// Categories, and which of them are there for one notification each: the newest 256 of these, the oldest
/// first.
struct CategorySet {
  CategoryMap all;
  std::deque<std::string> passing;
};

/// Changes to a set of categories as a text that grows at its end: each field with its length in front
/// ("4:read"), so that any byte may stand in it.
[[nodiscard]] std::string encodeRemoval(std::string_view identifier);
[[nodiscard]] std::string encodeCategory(const platform::NotificationCategory& category, bool passing);

/// Applies the changes in `text`, one after the other, and answers how many bytes of it make sense: a last
/// one that was cut short does not.
std::size_t applyChanges(std::string_view text, CategorySet& categories);

}  // namespace VorselKelp::system
