#pragma once

#include <boost/json.hpp>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <system_error>
#include <utility>

namespace VorselKelp::json {

/// Builds values out of what the parser comes across. It reads doubles itself: what the parser makes of their
/// digits is off by the last bit now and then, and infinite where the digits are beyond every double.
class ValueBuilder {
 public:
  using error_code = boost::json::error_code;
  using string_view = boost::json::string_view;

  // Required by the parser.
  static constexpr std::size_t max_object_size = boost::json::object::max_size();
  static constexpr std::size_t max_array_size = boost::json::array::max_size();
  static constexpr std::size_t max_key_size = boost::json::string::max_size();
  static constexpr std::size_t max_string_size = boost::json::string::max_size();

  /// `scratch` outlives this object.
  ValueBuilder(unsigned char* scratch, std::size_t size) : stack_({}, scratch, size) {}

  /// Values built from now on take their memory from `memory`.
  void reset(boost::json::storage_ptr memory) { stack_.reset(std::move(memory)); }
  /// The finished root.
  boost::json::value release() { return stack_.release(); }

  bool on_document_begin(error_code&) { return true; }
  bool on_document_end(error_code&) { return true; }
  bool on_object_begin(error_code&) { return true; }
  bool on_object_end(std::size_t members, error_code&) { return stack_.push_object(members), true; }
  bool on_array_begin(error_code&) { return true; }
  bool on_array_end(std::size_t elements, error_code&) { return stack_.push_array(elements), true; }
  bool on_key_part(string_view part, std::size_t, error_code&) { return stack_.push_chars(part), true; }
  bool on_key(string_view part, std::size_t, error_code&) { return stack_.push_key(part), true; }
  bool on_string_part(string_view part, std::size_t, error_code&) { return stack_.push_chars(part), true; }
  bool on_string(string_view part, std::size_t, error_code&) { return stack_.push_string(part), true; }
  /// Numbers come in parts only where a text does.
  bool on_number_part(string_view, error_code&) { return true; }
  bool on_int64(std::int64_t number, string_view, error_code&) { return stack_.push_int64(number), true; }
  bool on_uint64(std::uint64_t number, string_view, error_code&) { return stack_.push_uint64(number), true; }
  bool on_double(double estimate, string_view digits, error_code& error) {
    double number = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (read.ec == std::errc::result_out_of_range) {
      if (std::abs(estimate) > 1) return error = boost::json::error::exponent_overflow, false;
      number = std::copysign(0.0, estimate);  // closer to zero than any other double
    }
    stack_.push_double(number);
    return true;
  }
  bool on_bool(bool value, error_code&) { return stack_.push_bool(value), true; }
  bool on_null(error_code&) { return stack_.push_null(), true; }
  bool on_comment_part(string_view, error_code&) { return true; }
  bool on_comment(string_view, error_code&) { return true; }

 private:
  boost::json::value_stack stack_;
};

}  // namespace VorselKelp::json
