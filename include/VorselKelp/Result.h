#pragma once

#include <string>
#include <utility>
#include <variant>

namespace VorselKelp {

/// Why an operation failed, in words meant for a person; `code` is the service's own number, 0 when it has
/// none.
struct Error {
  std::string description;
  int code = 0;
};

/// Either a value or the reason why there is none. Nothing in this library throws across its public surface.
template <class T>
class [[nodiscard]] Result {
 public:
  Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}
  Result(Error error) : state_(std::in_place_index<1>, std::move(error)) {}

  [[nodiscard]] bool ok() const { return state_.index() == 0; }
  explicit operator bool() const { return ok(); }

  /// Only while ok().
  T& operator*() & { return *std::get_if<0>(&state_); }
  const T& operator*() const& { return *std::get_if<0>(&state_); }
  T&& operator*() && { return std::move(*std::get_if<0>(&state_)); }
  T* operator->() { return std::get_if<0>(&state_); }
  const T* operator->() const { return std::get_if<0>(&state_); }

  /// Only while not ok().
  const Error& error() const { return *std::get_if<1>(&state_); }

 private:
  std::variant<T, Error> state_;
};

/// The value of an operation that yields nothing but its success.
struct Done {};
using Status = Result<Done>;

}  // namespace VorselKelp
