#include "json/Document.h"

#include <array>
#include <boost/json/basic_parser_impl.hpp>
#include <new>

#include "base/Text.h"
#include "json/ValueBuilder.h"

namespace VorselKelp::json {

Result<Document> Document::parse(std::string_view text) {
  text = withoutByteOrderMark(text);
  boost::json::parse_options options;
  options.max_depth = deepestLevel;
  boost::json::error_code error;
  try {
    auto memory = std::make_unique<Memory>(text.size() + 1024);
    std::array<unsigned char, 4096> scratch;
    boost::json::basic_parser<ValueBuilder> parser(options, scratch.data(), scratch.size());
    parser.handler().reset(&memory->resource);
    const auto read = parser.write_some(false, text.data(), text.size(), error);
    if (!error && read < text.size()) error = boost::json::error::extra_data;
    if (!error) {
      memory->root = parser.handler().release();
      return Document(std::move(memory));
    }
  } catch (const std::exception& failure) {  // a text or a list beyond the parser's limits, or no memory
    return Error{failure.what()};
  }
  return Error{error.message()};
}

}  // namespace VorselKelp::json
