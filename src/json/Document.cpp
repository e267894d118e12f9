#include "json/Document.h"

#include <array>
#include <new>

namespace VorselKelp::json {

Result<Document> Document::parse(std::string_view text) {
  boost::json::parse_options options;
  options.max_depth = 64;
  boost::json::error_code error;
  try {
    auto memory = std::make_unique<Memory>(text.size() + 1024);
    std::array<unsigned char, 4096> scratch;
    boost::json::parser parser({}, options, scratch.data(), scratch.size());
    parser.reset(&memory->resource);  // the constructor's resource serves the parser's own scratch alone
    parser.write(text.data(), text.size(), error);
    if (!error) {
      memory->root = parser.release();
      return Document(std::move(memory));
    }
  } catch (const std::exception& failure) {  // a text or a list beyond the parser's limits, or no memory
    return Error{failure.what()};
  }
  return Error{error.message()};
}

}  // namespace VorselKelp::json
