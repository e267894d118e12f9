#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "VorselKelp/Result.h"
#include "json/KeyTable.h"

namespace VorselKelp {

/// Whatever value the page adds to its answer: nothing of it is read, so none spoils the answer.
struct DataClass {};

/// What the permission page answers.
struct CustomPromtEvent {
  /// Longer texts are no answer of ours and are not read.
  static constexpr std::size_t textLimit = std::size_t{1} << 20;

  std::optional<std::string> event;
  std::optional<DataClass> data;

  static Result<CustomPromtEvent> decode(std::string_view text);
  /// Whether the user wants to be asked by the system; "ok" anywhere in the name says so.
  [[nodiscard]] bool agrees() const;
  /// One line, however long the name is.
  [[nodiscard]] std::string description() const;
};

namespace json {

template <>
struct KeyTable<CustomPromtEvent> {
  static constexpr auto keys =
      std::tuple{key("event", &CustomPromtEvent::event), key("data", &CustomPromtEvent::data)};
};

}  // namespace json
}  // namespace VorselKelp
