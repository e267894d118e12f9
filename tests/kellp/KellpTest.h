#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpTesting/MemoryPlatform.h"
#include "net/ServerAnswers.h"

namespace VorselKelp {

inline std::size_t occurrences(std::string_view text, std::string_view what) {
  std::size_t count = 0;
  for (auto at = text.find(what); at != text.npos; at = text.find(what, at + 1)) ++count;
  return count;
}

/// The library as an application meets it: installed on a device in memory that knows one group.
class KellpTest : public testing::Test {
 protected:
  static constexpr const char* group = "group.example";

  KellpTest() {
    device_->addGroup(group);
    VorselKellp::install(app_.platform());
  }

  /// Starts the application with a remote configuration document of "{}", and lets the main queue run.
  void start(bool push = true) {
    VorselBuilder builder("key", group);
    if (push) builder.push();
    VorselKellp::initialize(builder.build());
    app_.urlSession->setRule("/tag/key.json", status(200, "{}"));
    app_.settle();
  }

  testing_platform::MemoryDefaultsDomain& store() const { return *device_->groupStores->find(group); }
  template <class T>
  std::optional<T> stored(const char* key) const {
    const auto value = store().object(key);
    const T* typed = value ? value->as<T>() : nullptr;
    return typed ? std::optional<T>(*typed) : std::nullopt;
  }
  std::optional<std::string> text(const char* key) const { return stored<std::string>(key); }

  /// The bodies sent to a path, in order.
  std::vector<std::string> bodies(std::string_view path) const {
    std::vector<std::string> all;
    for (const auto& request : app_.urlSession->requests()) {
      if (testing_platform::MemoryURLSession::pathOf(request.url) == path) all.push_back(request.body);
    }
    return all;
  }
  /// The "code" of every activity report, in order.
  std::vector<int> codes() const {
    std::vector<int> all;
    for (const auto& body : bodies("/v2/activity")) {
      const auto report = JSONAny::decode(body);
      const JSONAny* code = report ? report->find("code") : nullptr;
      all.push_back(code ? static_cast<int>(*code->as<std::int64_t>()) : 0);
    }
    return all;
  }
  std::vector<std::string> lines() const { return app_.console->texts(); }
  bool printed(std::string_view text) const { return app_.console->count(text) > 0; }

  std::shared_ptr<testing_platform::MemoryDevice> device_ =
      std::make_shared<testing_platform::MemoryDevice>();
  testing_platform::MemoryPlatform app_{device_};
};

}  // namespace VorselKelp
