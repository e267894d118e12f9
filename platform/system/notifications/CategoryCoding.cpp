#include "notifications/CategoryCoding.h"

#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace VorselKelp::system {
namespace {

using platform::NotificationActionOption;
using platform::NotificationCategory;

constexpr std::string_view addition = "+";
constexpr std::string_view removal = "-";
/// Several changes, or a long one, of which no part counts without the others.
constexpr std::string_view step = "=";
// What is said of a category, as bits of a number.
constexpr std::uint64_t tellsDismissal = 1;
constexpr std::uint64_t isPassing = 2;
// As many as there are delivered notifications that could still need one.
constexpr std::size_t passingKept = 256;

void append(std::string& text, std::string_view field) {
  text += std::to_string(field.size());
  text += ':';
  text += field;
}

void append(std::string& text, std::uint64_t number) {
  append(text, std::string_view(std::to_string(number)));
}

/// Takes one field after the other off a text; after the first that makes no sense it has none.
class Fields {
 public:
  explicit Fields(std::string_view text) : rest_(text) {}

  [[nodiscard]] std::size_t left() const { return rest_.size(); }
  [[nodiscard]] bool sound() const { return sound_; }

  std::string_view text() {
    const auto colon = rest_.find(':');
    const auto size = number(rest_.substr(0, colon));
    const auto start = colon + 1;
    if (!size || *size > rest_.size() - start) return fail();
    const auto field = rest_.substr(start, *size);
    rest_.remove_prefix(start + *size);
    return field;
  }

  std::uint64_t count() {
    const auto value = number(text());
    if (!value) fail();
    return value.value_or(0);
  }

 private:
  static std::optional<std::uint64_t> number(std::string_view digits) {
    std::uint64_t value = 0;
    const auto* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, value);
    return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
  }

  std::string_view fail() {
    sound_ = false;
    return rest_ = {};
  }

  std::string_view rest_;
  bool sound_ = true;
};

/// Answers whether it is a passing one.
bool readRest(Fields& fields, NotificationCategory& category) {
  const auto bits = fields.count();
  category.customDismissAction = (bits & tellsDismissal) != 0;
  for (auto actions = fields.count(); actions > 0 && fields.sound(); --actions) {
    auto& action = category.actions.emplace_back();
    action.identifier = fields.text();
    action.title = fields.text();
    if (fields.count() == static_cast<std::uint64_t>(NotificationActionOption::destructive))
      action.option = NotificationActionOption::destructive;
  }
  return (bits & isPassing) != 0;
}

struct Change {
  NotificationCategory category;  ///< only its name counts for one that is removed
  bool removed = false;
  bool passing = false;
};

/// The change of which `kind` was read.
std::optional<Change> readChange(std::string_view kind, Fields& fields) {
  Change change{{std::string(fields.text()), {}, false}, kind == removal};
  if (kind == addition) change.passing = readRest(fields, change.category);
  if (!fields.sound() || (kind != addition && kind != removal)) return std::nullopt;
  return change;
}

/// A step has no zeros; they stand where a disk has lost a part of it. Empty: it makes no sense.
std::vector<Change> readStep(std::string_view text) {
  std::vector<Change> changes;
  if (text.find('\0') != std::string_view::npos) return {};
  for (Fields fields(text); fields.left() > 0;) {
    auto change = readChange(fields.text(), fields);
    if (!change) return {};
    changes.push_back(*std::move(change));
  }
  return changes;
}

void apply(Change change, CategorySet& categories) {
  if (change.removed) return categories.remove(change.category.identifier);
  categories.put(std::move(change.category), change.passing);
}

}  // namespace

const NotificationCategory* CategorySet::find(std::string_view identifier) const {
  const auto place = places_.find(identifier);
  return place == places_.end() ? nullptr : &kept_[place->second].category;
}

void CategorySet::put(NotificationCategory category, bool passing) {
  remove(category.identifier);
  kept_.push_back({std::move(category), passing});
  places_.emplace(kept_.back().category.identifier, kept_.size() - 1);
  if (!passing || ++passing_ <= passingKept) return;
  while (kept_[oldestPassing_].gone || !kept_[oldestPassing_].passing) ++oldestPassing_;
  remove(kept_[oldestPassing_].category.identifier);
}

void CategorySet::remove(std::string_view identifier) {
  const auto place = places_.find(identifier);
  if (place == places_.end()) return;
  auto& kept = kept_[place->second];
  if (kept.passing) --passing_;
  kept.gone = true;
  places_.erase(place);
}

std::string encodeRemoval(std::string_view identifier) {
  std::string text;
  append(text, removal);
  append(text, identifier);
  return text;
}

std::string encodeCategory(const NotificationCategory& category, bool passing) {
  std::string text;
  append(text, addition);
  append(text, category.identifier);
  append(text, (category.customDismissAction ? tellsDismissal : 0) | (passing ? isPassing : 0));
  append(text, category.actions.size());
  for (const auto& action : category.actions) {
    append(text, action.identifier);
    append(text, action.title);
    append(text, static_cast<std::uint64_t>(action.option));
  }
  return text;
}

std::string encodeStep(std::string changes) {
  if (changes.find('\0') != std::string::npos) return changes;
  std::string text;
  append(text, step);
  append(text, changes);
  return text;
}

AppliedChanges applyChanges(std::string_view text, CategorySet& categories) {
  Fields fields(text);
  AppliedChanges applied;
  while (fields.left() > 0) {
    const auto kind = fields.text();
    if (kind == step) {
      auto changes = readStep(fields.text());
      if (changes.empty()) break;
      for (auto& change : changes) apply(std::move(change), categories);
      applied.count += changes.size();
    } else {
      auto change = readChange(kind, fields);
      if (!change) break;
      apply(*std::move(change), categories);
      ++applied.count;
    }
    applied.bytes = text.size() - fields.left();
  }
  return applied;
}

}  // namespace VorselKelp::system
