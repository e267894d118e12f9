#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "VorselKelp/JSONAny.h"
#include "VorselKelpWebPush/Base64Url.h"

namespace VorselKelp::webpush {

/// One example of the standards: its members as they stand in the file, or as the bytes that they mean.
class Vector {
 public:
  explicit Vector(const std::string& name) {
    std::ostringstream text;
    text << std::ifstream(VECTORS).rdbuf();
    const auto all = JSONAny::decode(text.str());
    if (all && all->find(name) != nullptr) members_ = *all->find(name);
  }
  [[nodiscard]] std::string text(const char* member) const {
    const auto* found = members_.find(member);
    EXPECT_NE(found, nullptr) << member;
    return found != nullptr ? *found->as<std::string>() : "";
  }
  [[nodiscard]] std::string bytes(const char* member) const {
    const auto decoded = fromBase64Url(text(member));
    EXPECT_TRUE(decoded.ok()) << member;
    return decoded ? *decoded : "";
  }

 private:
  JSONAny members_;
};

template <class T>
std::string whyNot(const Result<T>& result) {
  return result ? "nothing is wrong" : result.error().description;
}

}  // namespace VorselKelp::webpush
