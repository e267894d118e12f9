#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"

namespace VorselKelp {

/// Stands for a JSON null. All of them are equal, and all hash to 0.
class VORSELKELP_API JSONNull {
 public:
  /// Succeeds only for the text of a JSON null; otherwise "Wrong type for JSONNull".
  static Result<JSONNull> decode(std::string_view json);
  [[nodiscard]] std::string encode() const { return "null"; }
  [[nodiscard]] std::size_t hashValue() const { return 0; }
  friend bool operator==(const JSONNull&, const JSONNull&) { return true; }
};

/// The key of an object of unknown shape. Only texts are keys: an integer makes none.
class JSONCodingKey {
 public:
  explicit JSONCodingKey(std::string text) : key(std::move(text)) {}
  static std::optional<JSONCodingKey> fromInteger(std::int64_t) { return std::nullopt; }
  [[nodiscard]] std::optional<std::int64_t> intValue() const { return std::nullopt; }
  friend bool operator==(const JSONCodingKey&, const JSONCodingKey&) = default;

  std::string key;
};

/// Any JSON value. A number without fraction and exponent that fits 64 signed bits is an integer; every other
/// number is a double. Objects keep the order in which their keys first came, which makes no two of them
/// different; of a key that comes twice, the last value holds.
class VORSELKELP_API JSONAny {
 public:
  struct Member;
  using List = std::vector<JSONAny>;
  using Dictionary = std::vector<Member>;
  using Value = std::variant<JSONNull, bool, std::int64_t, double, std::string, List, Dictionary>;

  JSONAny() = default;
  template <class T>
  requires std::is_constructible_v<Value, T&&> &&
      (!std::is_same_v<std::remove_cvref_t<T>, JSONAny>)JSONAny(T&& v)
      : value(std::forward<T>(v)) {}
  JSONAny(const char* text);
  JSONAny(int number);

  /// Reads one JSON text of at most 64 levels; "Cannot decode JSONAny" when it is none.
  static Result<JSONAny> decode(std::string_view json);

  /// Writes the value without white space; "Cannot encode JSONAny" for what JSON has no form for: a number
  /// that is not finite, or a text that is not UTF-8.
  [[nodiscard]] Result<std::string> encode() const;

  /// The value under `key`, or null when this is no object or has no such key. Owned by this object.
  [[nodiscard]] const JSONAny* find(std::string_view key) const;

  template <class T>
  [[nodiscard]] const T* as() const {
    return std::get_if<T>(&value);
  }

  friend VORSELKELP_API bool operator==(const JSONAny&, const JSONAny&);

  Value value;
};

struct VORSELKELP_API JSONAny::Member {
  std::string key;
  JSONAny value;
  friend bool operator==(const Member&, const Member&) = default;
};

// Behind Member: compilers may want it whole where a Value is made.
inline JSONAny::JSONAny(const char* text) : value(std::string(text)) {}
inline JSONAny::JSONAny(int number) : value(std::int64_t{number}) {}

}  // namespace VorselKelp
