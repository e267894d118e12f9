#pragma once

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "VorselKelp/JSONAny.h"

namespace VorselKelp::system {

/// Reads the members of a JSON object of settings. It collects the first thing that is wrong, and the keys
/// that nobody has asked for, so that the reading can go on without a branch per key. `path` is what stands
/// before the object's keys in messages; `object`, which may be null for an empty one, must outlive it.
class ObjectReader {
 public:
  ObjectReader(const JSONAny* object, std::string path) : object_(object), path_(std::move(path)) {
    if (object_ != nullptr && object_->as<JSONAny::Dictionary>() == nullptr) fail("", "must be an object");
  }

  template <class T>
  void read(std::string_view key, T& target, const char* kind) {
    if (const auto* value = find(key)) {
      if (const auto* typed = value->as<T>()) {
        target = *typed;
      } else {
        fail(key, kind);
      }
    }
  }

  void read(std::string_view key, std::string& target) { read<std::string>(key, target, "must be a text"); }

  void read(std::string_view key, double& target) {
    const auto* value = find(key);
    if (value == nullptr) return;
    if (const auto* integer = value->as<std::int64_t>()) {
      target = static_cast<double>(*integer);
    } else {
      read<double>(key, target, "must be a number");
    }
  }

  template <class T>
  void read(std::string_view key, std::optional<T>& target) {
    if (find(key) == nullptr) return;
    T value{};
    if constexpr (std::is_same_v<T, bool>) {
      read<bool>(key, value, "must be true or false");
    } else {
      read(key, value);
    }
    target = std::move(value);
  }

  void readTexts(std::string_view key, std::vector<std::string>& target) {
    const auto* value = find(key);
    if (value == nullptr) return;
    const auto* list = value->as<JSONAny::List>();
    if (list == nullptr) return fail(key, "must be a list of texts");
    target.clear();
    for (const auto& element : *list) {
      const auto* text = element.as<std::string>();
      if (text == nullptr) return fail(key, "must be a list of texts");
      target.push_back(*text);
    }
  }

  template <class Read>
  void readObject(std::string_view key, Read&& read) {
    const auto* value = find(key);
    if (value == nullptr) return;
    ObjectReader inner(value, path_ + std::string(key) + ".");
    read(inner);
    if (error_.empty()) error_ = inner.error_;
    for (auto& unknown : inner.unknownKeys()) unknown_.push_back(std::move(unknown));
  }

  /// The object's keys that nobody has asked for, and those of the objects inside.
  [[nodiscard]] std::vector<std::string> unknownKeys() const {
    auto unknown = unknown_;
    const auto* members = object_ == nullptr ? nullptr : object_->as<JSONAny::Dictionary>();
    if (members == nullptr) return unknown;
    for (const auto& [key, value] : *members) {
      if (!known_.contains(key)) unknown.push_back(path_ + key);
    }
    return unknown;
  }

  void fail(std::string_view key, const char* what) {
    if (!error_.empty()) return;
    auto name = path_ + std::string(key);
    if (name.ends_with('.')) name.pop_back();
    error_ = "\"" + name + "\" " + what;
  }

  [[nodiscard]] const JSONAny* find(std::string_view key) {
    known_.emplace(key);
    const auto* value = object_ == nullptr ? nullptr : object_->find(key);
    return value == nullptr || value->as<JSONNull>() != nullptr ? nullptr : value;
  }
  /// An object of free keys.
  [[nodiscard]] const JSONAny::Dictionary* members() {
    const auto* members = object_->as<JSONAny::Dictionary>();
    if (members != nullptr) std::ranges::for_each(*members, [this](const auto& m) { known_.insert(m.key); });
    return members;
  }
  [[nodiscard]] const std::string& error() const { return error_; }

 private:
  const JSONAny* object_;
  std::string path_;
  std::string error_;
  std::set<std::string, std::less<>> known_;
  std::vector<std::string> unknown_;
};

}  // namespace VorselKelp::system
