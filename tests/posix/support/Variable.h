#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace VorselKelp::testing_support {

/// Sets a variable of the environment for the length of a test, or takes it away.
class Variable {
 public:
  Variable(const char* name, const char* value) : name_(name) {
    if (const char* old = ::getenv(name)) old_ = old;
    value != nullptr ? ::setenv(name, value, 1) : ::unsetenv(name);
  }
  ~Variable() { old_ ? ::setenv(name_, old_->c_str(), 1) : ::unsetenv(name_); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

 private:
  const char* name_;
  std::optional<std::string> old_;
};

}  // namespace VorselKelp::testing_support
