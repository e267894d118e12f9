#include "VorselKelp/JSONText.h"

#include <algorithm>

#include "base/Text.h"
#include "json/JSONFault.h"

namespace VorselKelp {
namespace {

std::string placeOf(std::string_view text, std::size_t offset) {
  const auto before = text.substr(0, offset);
  const auto line = std::ranges::count(before, '\n') + 1;
  const auto inLine = before.substr(before.rfind('\n') + 1);
  return "line " + std::to_string(line) + ", column " +
         std::to_string(std::ranges::count_if(inLine, json::beginsCharacter) + 1);
}

}  // namespace

Result<JSONAny> readJSONText(std::string_view text) {
  auto read = JSONAny::decode(text);
  if (read) return read;
  text = withoutByteOrderMark(text);
  const auto fault = json::findJSONFault(text);
  if (!fault) return Error{"a number in it is out of range"};
  return Error{placeOf(text, fault->offset) + ": " + fault->what};
}

}  // namespace VorselKelp
