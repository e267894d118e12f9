#include "json/Writer.h"

#include <array>
#include <cmath>
#include <cstdio>

#include "base/Text.h"

namespace VorselKelp::json {
namespace {

std::string_view shortEscape(char c) {
  switch (c) {
    case '"':
      return "\\\"";
    case '\\':
      return "\\\\";
    case '\b':
      return "\\b";
    case '\f':
      return "\\f";
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      return {};
  }
}

}  // namespace

void Writer::text(std::string_view text) {
  out_ += '"';
  bool ascii = true;
  std::size_t plain = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c >= 0x80) ascii = false;
    if (c >= 0x20 && c != '"' && c != '\\') continue;
    out_.append(text, plain, i - plain);
    plain = i + 1;
    escape(text[i]);
  }
  out_.append(text, plain);
  out_ += '"';
  if (!ascii && !isValidUtf8(text)) failed_ = true;
}

void Writer::escape(char c) {
  if (const auto shortForm = shortEscape(c); !shortForm.empty()) {
    out_ += shortForm;
    return;
  }
  std::array<char, 8> code{};
  std::snprintf(code.data(), code.size(), "\\u%04x", static_cast<unsigned char>(c));
  out_ += code.data();
}

void Writer::number(std::int64_t number) {
  out_ += std::to_string(number);
}

void Writer::number(double number) {
  if (!std::isfinite(number)) failed_ = true;
  out_ += std::isfinite(number) ? decimalText(number) : "0";
}

void Writer::key(std::string_view name, bool first) {
  if (!first) out_ += ',';
  text(name);
  out_ += ':';
}

}  // namespace VorselKelp::json
