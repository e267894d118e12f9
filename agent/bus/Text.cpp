#include "bus/Text.h"

#include "glib/Pointers.h"

namespace VorselKelp::agent {

std::string shortText(const std::string& text, std::size_t limit) {
  std::string valid = freedesktop::TextPtr(g_utf8_make_valid(text.c_str(), -1)).get();
  if (valid.size() <= limit) return valid;
  const auto* cut = g_utf8_find_prev_char(valid.data(), valid.data() + limit + 1);
  valid.resize(static_cast<std::size_t>(cut - valid.data()));
  return valid;
}

}  // namespace VorselKelp::agent
