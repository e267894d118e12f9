#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

#include "VorselKelp/platform/NotificationCenter.h"

namespace VorselKelp::system {

/// Categories, and which of them are there for one notification each: of these, the newest 256.
class CategorySet {
 public:
  struct Kept {
    platform::NotificationCategory category;
    bool passing = false;  ///< there for one notification
    bool gone = false;
  };

  CategorySet() = default;
  CategorySet(CategorySet&&) = default;
  CategorySet& operator=(CategorySet&&) = default;
  CategorySet(const CategorySet&) = delete;
  CategorySet& operator=(const CategorySet&) = delete;

  [[nodiscard]] std::size_t size() const { return places_.size(); }
  /// Null: there is none of this name. Lives until the next change.
  [[nodiscard]] const platform::NotificationCategory* find(std::string_view identifier) const;
  /// Calls `use` with each that is kept, in the order in which they were put.
  template <class Use>
  void each(Use use) const {
    for (const auto& kept : kept_) {
      if (!kept.gone) use(kept);
    }
  }

  void put(platform::NotificationCategory category, bool passing);
  void remove(std::string_view identifier);

 private:
  // An extension reads them all, for one notification: nothing is sorted or copied here. None moves once it
  // is there, so that its place is found by its own name.
  std::deque<Kept> kept_;
  std::unordered_map<std::string_view, std::size_t> places_;
  std::size_t passing_ = 0;
  std::size_t oldestPassing_ = 0;  ///< no passing one is before this place
};

/// Changes to a set of categories as a text that grows at its end: each field with its length in front
/// ("4:read"), so that any byte may stand in it.
[[nodiscard]] std::string encodeRemoval(std::string_view identifier);
[[nodiscard]] std::string encodeCategory(const platform::NotificationCategory& category, bool passing);
/// Changes that count together or not at all.
[[nodiscard]] std::string encodeStep(std::string changes);

/// How much of a text made sense.
struct AppliedChanges {
  std::size_t count = 0;
  std::size_t bytes = 0;
};
/// Applies the changes in `text`, one after the other, up to the first that makes no sense: a last one may
/// have been cut short.
AppliedChanges applyChanges(std::string_view text, CategorySet& categories);

}  // namespace VorselKelp::system
