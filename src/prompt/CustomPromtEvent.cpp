#include "prompt/CustomPromtEvent.h"

#include "VorselKelp/JSONAny.h"
#include "json/Decoder.h"
#include "json/Shallow.h"

namespace VorselKelp {
namespace json {

static bool decodeValue(const boost::json::value&, DataClass&, const Place&, Failure&) {
  return true;
}

}  // namespace json

namespace {

constexpr std::size_t shownLimit = 200;
/// The data that a page adds may nest as deep as it likes.
constexpr std::size_t levelsRead = 32;

/// At most `shownLimit` bytes of the text, cut between two characters.
std::string shown(const std::string& text) {
  std::size_t end = std::min(text.size(), shownLimit);
  while (end > 0 && end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  const auto quoted = JSONAny(text.substr(0, end)).encode();  // keeps line breaks out of the line
  return (quoted ? *quoted : std::string("\"\"")) + (end < text.size() ? "..." : "");
}

}  // namespace

Result<CustomPromtEvent> CustomPromtEvent::decode(std::string_view text) {
  if (text.size() > textLimit) return Error{"the page's answer is too long"};
  return json::decode<CustomPromtEvent>(json::shallow(text, levelsRead));
}

bool CustomPromtEvent::agrees() const {
  return event && event->find("ok") != std::string::npos;
}

std::string CustomPromtEvent::description() const {
  return "CustomPromtEvent(event: " + (event ? "Optional(" + shown(*event) + ")" : "nil") +
         ", data: " + (data ? "Optional(DataClass())" : "nil") + ")";
}

}  // namespace VorselKelp
