#include "bus/BusText.h"

#include "glib/Pointers.h"

namespace VorselKelp::freedesktop {

std::string busText(std::string_view text, std::size_t limit) {
  if (text.size() > limit) {
    constexpr std::size_t longestTail = 3;  // continuation bytes of one character
    const auto continues = [&](std::size_t at) {
      return (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80;
    };
    std::size_t end = limit;
    while (end > 0 && limit - end < longestTail && continues(end)) --end;
    text = text.substr(0, continues(end) ? limit : end);
  }
  if (text.empty()) return {};
  return TextPtr(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()))).get();
}

}  // namespace VorselKelp::freedesktop
