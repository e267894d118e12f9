#pragma once

#include <dlfcn.h>

#include <string>

namespace VorselKelp::posix {

/// A shared library loaded at run time. It is never unloaded: such libraries leave exit handlers and threads
/// behind.
class DynamicLibrary {
 public:
  explicit DynamicLibrary(const std::string& name) : handle_(dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (!handle_) noteError();
  }

  /// Finds `name` in the library or in those that it needs. What is missing makes error() non-empty.
  template <class Function>
  void find(Function*& function, const char* name) {
    if (!error_.empty()) return;
    function = reinterpret_cast<Function*>(dlsym(handle_, name));
    if (!function) noteError();
  }

  /// Empty while everything asked for was found.
  [[nodiscard]] const std::string& error() const { return error_; }

 private:
  void noteError() {
    const char* text = dlerror();
    error_ = text ? text : "unknown error";
  }

  void* handle_;
  std::string error_;
};

}  // namespace VorselKelp::posix
