#include "brellixctl/PlainText.h"

#include <cstdio>

#include "VorselKelpSystem/NotificationRecords.h"

namespace brellixctl {
namespace {

/// Length of the control character at the start of well-formed UTF-8; 0 when it is another one.
std::size_t controlLength(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if (first < 0x20 || first == 0x7f) return 1;
  return first == 0xc2 && text.size() > 1 && static_cast<unsigned char>(text[1]) < 0xa0 ? 2 : 0;
}

void write(std::FILE* file, const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), file);
}

}  // namespace

std::string plainText(std::string_view text, bool lines) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  const auto wellFormed = VorselKelp::system::lossyText(text);
  std::string plain;
  for (std::string_view rest = wellFormed; !rest.empty();) {
    const bool lineFeed = lines && rest[0] == '\n';
    const std::size_t control = lineFeed ? 0 : controlLength(rest);
    if (control == 0) plain += rest[0];
    for (const char c : rest.substr(0, control)) {
      const auto byte = static_cast<unsigned char>(c);
      plain += {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
    }
    rest.remove_prefix(control > 0 ? control : 1);
  }
  return plain;
}

void printWords(const std::string& text) {
  write(stdout, plainText(text, true));
}

void printErrorLine(const std::string& text) {
  write(stderr, plainText(text) + '\n');
}

}  // namespace brellixctl
