#include "json/Shallow.h"

#include <optional>

namespace VorselKelp::json {
namespace {

char closing(char bracket) {
  return bracket == '[' ? ']' : '}';
}

/// Follows a JSON text and knows how deep it is.
class Depth {
 public:
  /// The level of `c`; a bracket belongs to the level that it opens or closes. Absent for one that closes
  /// nothing.
  std::optional<std::size_t> levelOf(char c) {
    if (inText_) {
      inText_ = escaped_ || c != '"';
      escaped_ = !escaped_ && c == '\\';
      return open_.size() + 1;
    }
    inText_ = c == '"';
    if (c == '[' || c == '{') {
      open_ += closing(c);
      return open_.size();
    }
    if (c != ']' && c != '}') return open_.size() + 1;
    if (open_.empty() || open_.back() != c) return std::nullopt;
    open_.pop_back();
    return open_.size() + 1;
  }

 private:
  std::string open_;  ///< what closes the brackets that are open
  bool inText_ = false;
  bool escaped_ = false;
};

}  // namespace

std::string shallow(std::string_view text, std::size_t levels) {
  std::string out;
  Depth depth;
  for (const char c : text) {
    const auto level = depth.levelOf(c);
    if (!level) return std::string(text);
    if (*level <= levels) out += c;
  }
  return out;
}

}  // namespace VorselKelp::json
