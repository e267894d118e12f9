#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "VorselKelpPosix/SqliteUserDefaults.h"
#include "posix/support/TemporaryFolder.h"

namespace VorselKelp::testing_support {

using platform::DefaultsValue;
using platform::MapKind;
using platform::TextList;
using Map = DefaultsValue::Map;

inline DefaultsValue text(std::string value) {
  return {std::move(value)};
}
inline DefaultsValue list(TextList value) {
  return {std::move(value)};
}
inline DefaultsValue integer(std::int64_t value) {
  return {value};
}

class StoreFixture : public testing::Test {
 protected:
  [[nodiscard]] std::shared_ptr<platform::UserDefaults> userDefaults() {
    posix::UserDefaultsOptions options;
    options.standardFile = file();
    options.containerPath = [this](std::string_view group) -> std::optional<std::string> {
      if (group.starts_with("unknown")) return {};
      return folder_ / "container";
    };
    options.lockPatience = lockPatience_;
    options.shortLived = shortLived_;
    options.report = [this](std::string_view line) { lines_.emplace_back(line); };
    return posix::makeUserDefaults(std::move(options));
  }
  std::shared_ptr<platform::DefaultsDomain> domain() { return userDefaults()->standard(); }
  [[nodiscard]] std::string file() const { return folder_ / "Library/own.sqlite"; }

  TemporaryFolder folder_;
  std::chrono::milliseconds lockPatience_{5000};
  bool shortLived_ = false;
  std::vector<std::string> lines_;
};

}  // namespace VorselKelp::testing_support
