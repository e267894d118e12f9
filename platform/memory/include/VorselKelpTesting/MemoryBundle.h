#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "VorselKelp/platform/BundleInformation.h"

namespace VorselKelp::testing_platform {

/// Information dictionaries that the test fills before the library reads them. Thread-safe.
class MemoryBundle final : public platform::BundleInformation {
 public:
  std::optional<std::string> mainBundleText(std::string_view key) override { return find(main_, key); }
  std::optional<std::string> libraryBundleText(std::string_view key) override { return find(library_, key); }
  std::optional<std::string> libraryResource(std::string_view name) override {
    return find(resources_, name);
  }

  /// An absent text removes the key: the library sees the same as for a value that is no text.
  void setMain(const std::string& key, std::optional<std::string> text) { set(main_, key, std::move(text)); }
  void setLibrary(const std::string& key, std::optional<std::string> text) {
    set(library_, key, std::move(text));
  }
  /// A file that comes with the library.
  void setResource(const std::string& name, std::optional<std::string> bytes) {
    set(resources_, name, std::move(bytes));
  }

 private:
  using Dictionary = std::map<std::string, std::string, std::less<>>;

  std::optional<std::string> find(const Dictionary& dictionary, std::string_view key) const {
    const std::lock_guard lock(mutex_);
    const auto found = dictionary.find(key);
    return found == dictionary.end() ? std::nullopt : std::optional(found->second);
  }
  void set(Dictionary& dictionary, const std::string& key, std::optional<std::string> text) {
    const std::lock_guard lock(mutex_);
    dictionary.erase(key);
    if (text) dictionary.emplace(key, std::move(*text));
  }

  mutable std::mutex mutex_;
  Dictionary main_;
  Dictionary library_;
  Dictionary resources_;
};

}  // namespace VorselKelp::testing_platform
