#include "json/JSONFault.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "base/Text.h"

namespace VorselKelp::json {
namespace {

constexpr std::size_t deepest = 64;  // levels
constexpr const char* space = " \t\r\n";

std::string nameOf(std::string_view rest) {
  if (rest.empty()) return "the end";
  if (rest[0] == '\n' || rest[0] == '\r') return "a line break";
  if (rest[0] == '"') return "a text";
  if (isAsciiControl(rest[0])) return "a control character";
  std::size_t end = 1;
  while (end < rest.size() && !beginsCharacter(rest[end])) ++end;
  const auto character = rest.substr(0, end);
  return isValidUtf8(character) ? '"' + std::string(character) + '"' : "a byte that is no UTF-8";
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

/// Walks over a text as the parser does. A step that finds a fault notes it and answers false, and so do the
/// steps around it.
class FaultFinder {
 public:
  explicit FaultFinder(std::string_view text) : text_(text) {}

  std::optional<JSONFault> find() {
    if (value()) {
      skipSpace();
      if (at_ < text_.size()) expect("the end of the text");
    }
    return fault_;
  }

 private:
  [[nodiscard]] char next() const { return at_ < text_.size() ? text_[at_] : '\0'; }
  bool expect(const std::string& what) {
    return refuse(at_, "expected " + what + ", found " + nameOf(text_.substr(at_)));
  }
  bool refuse(std::size_t offset, std::string what) {
    fault_ = JSONFault{offset, std::move(what)};
    return false;
  }
  bool take(char c) {
    if (at_ >= text_.size() || text_[at_] != c) return false;
    ++at_;
    return true;
  }
  void skipSpace() { at_ = std::min(text_.find_first_not_of(space, at_), text_.size()); }

  bool value() {
    skipSpace();
    const char first = next();
    if (first == '{') return nested(&FaultFinder::members);
    if (first == '[') return nested(&FaultFinder::elements);
    if (first == '"') return string();
    if (first == '-' || isDigit(first)) return number();
    for (const std::string_view word : {"true", "false", "null"}) {
      if (first == word.front() && text_.substr(at_).starts_with(word)) return at_ += word.size(), true;
    }
    return expect("a value");
  }

  bool nested(bool (FaultFinder::*inside)()) {
    if (depth_ == deepest) return refuse(at_, "more than 64 levels of objects and lists");
    ++depth_;
    ++at_;
    const bool whole = (this->*inside)();
    --depth_;
    return whole;
  }

  bool members() {
    skipSpace();
    if (take('}')) return true;
    const char* expected = "a key in double quotes, or \"}\"";
    while (true) {
      skipSpace();
      if (next() != '"') return expect(expected);
      if (!string()) return false;
      skipSpace();
      if (!take(':')) return expect("\":\" and a value after the key");
      if (!value()) return false;
      skipSpace();
      if (take('}')) return true;
      if (!take(',')) return expect("\",\" or \"}\"");
      expected = "a key in double quotes after the \",\"";
    }
  }

  bool elements() {
    skipSpace();
    if (take(']')) return true;
    while (true) {
      if (!value()) return false;
      skipSpace();
      if (take(']')) return true;
      if (!take(',')) return expect("\",\" or \"]\"");
    }
  }

  bool string() {
    const auto start = at_++;
    while (next() != '"') {
      if (at_ == text_.size()) return refuse(start, "a text without its closing quote");
      if (static_cast<unsigned char>(next()) < 0x20)
        return refuse(at_, "a line break or control character in a text; write it as an escape, such as \\n");
      if (next() != '\\') {
        ++at_;
      } else if (!escape()) {
        return false;
      }
    }
    ++at_;
    return isValidUtf8(text_.substr(start, at_ - start)) || refuse(start, "a text that is not UTF-8");
  }

  bool escape() {
    const auto start = at_++;
    if (next() != 'u') {
      if (std::string_view("\"\\/bfnrt").find(next()) == std::string_view::npos)
        return refuse(start, "an escape that JSON does not have; a backslash is written twice");
      return ++at_, true;
    }
    const auto unit = codeUnit();
    if (!unit) return refuse(start, "\\u without four hexadecimal digits");
    if (*unit < 0xD800 || *unit > 0xDFFF) return true;
    const auto second = *unit < 0xDC00 && take('\\') && next() == 'u' ? codeUnit() : std::nullopt;
    return (second && *second >= 0xDC00 && *second <= 0xDFFF) ||
           refuse(start, "one half of a surrogate pair without the other");
  }

  /// The four digits behind the "u" at which it stands.
  std::optional<std::uint32_t> codeUnit() {
    const auto digits = text_.substr(std::min(at_ + 1, text_.size()), 4);
    std::uint32_t unit = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16);
    if (digits.size() < 4 || read.ptr != digits.data() + 4) return std::nullopt;
    at_ += 5;
    return unit;
  }

  bool number() {
    take('-');
    if (!take('0') && !digits()) return expect("a digit");
    if (take('.') && !digits()) return expect("a digit after the decimal point");
    if (!take('e') && !take('E')) return true;
    if (!take('+')) take('-');
    return digits() || expect("a digit of the exponent");
  }

  bool digits() {
    const auto start = at_;
    while (isDigit(next())) ++at_;
    return at_ > start;
  }

  const std::string_view text_;
  std::size_t at_ = 0;
  std::size_t depth_ = 0;
  std::optional<JSONFault> fault_;
};

}  // namespace

std::optional<JSONFault> findJSONFault(std::string_view text) {
  return FaultFinder(text).find();
}

}  // namespace VorselKelp::json
