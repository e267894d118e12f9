#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace VorselKelp::json {

/// Appends JSON without white space to a text. A text that is not UTF-8, or a number that is not finite, has
/// no JSON form: the whole counts as failed then.
class Writer {
 public:
  void raw(std::string_view json) { out_ += json; }
  void text(std::string_view text);
  void number(std::int64_t number);
  void number(double number);
  void boolean(bool value) { out_ += value ? "true" : "false"; }
  /// A member's key and its colon, behind a comma unless it is the first one.
  void key(std::string_view name, bool first);

  [[nodiscard]] bool failed() const { return failed_; }
  [[nodiscard]] std::string take() { return std::move(out_); }

 private:
  void escape(char c);

  std::string out_;
  bool failed_ = false;
};

}  // namespace VorselKelp::json
