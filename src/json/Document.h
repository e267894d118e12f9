#pragma once

#include <boost/json.hpp>
#include <cstddef>
#include <memory>
#include <string_view>

#include "VorselKelp/Result.h"

namespace VorselKelp::json {

/// How deep lists and objects may nest.
inline constexpr std::size_t deepestLevel = 64;

/// One parsed JSON text with the memory of its values. Texts that are not UTF-8, nest deeper than that or
/// hold a number beyond every double do not parse; integers beyond 64 bits become doubles. A byte-order mark
/// in front is skipped.
class Document {
 public:
  static Result<Document> parse(std::string_view text);

  [[nodiscard]] const boost::json::value& root() const { return memory_->root; }

 private:
  struct Memory {
    explicit Memory(std::size_t expected) : resource(expected), root(&resource) {}
    boost::json::monotonic_resource resource;
    boost::json::value root;
  };
  explicit Document(std::unique_ptr<Memory> memory) : memory_(std::move(memory)) {}

  std::unique_ptr<Memory> memory_;
};

}  // namespace VorselKelp::json
