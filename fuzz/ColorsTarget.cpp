// A carousel's colours: whatever the text, a colour of components between 0 and 1.

#include <cctype>
#include <string>

#include "content_ext/ColorFromHex.h"
#include "support/Expect.h"
#include "support/Input.h"

using VorselKelp::colorFromHex;
using VorselKelp::ui::Color;

namespace {

bool isComponent(double value) {
  return value >= 0 && value <= 1;
}

/// ASCII letters alone: what else there is stands for itself.
std::string upperCased(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return text;
}

bool isHex(const std::string& text) {
  return text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
}

double pairAt(const std::string& digits, std::size_t at) {
  return static_cast<double>(std::stoul(digits.substr(at, 2), nullptr, 16)) / 255;
}

void checkDigits(const std::string& text, const Color& color) {
  if (!isHex(text)) return;
  if (text.size() == 3) {
    std::string doubled;
    for (const char c : text) doubled.append(2, c);
    FUZZ_EXPECT(color == colorFromHex(doubled));
  } else if (text.size() == 6) {
    FUZZ_EXPECT((color == Color{pairAt(text, 0), pairAt(text, 2), pairAt(text, 4), 1}));
  } else if (text.size() == 8) {
    FUZZ_EXPECT((color == Color{pairAt(text, 2), pairAt(text, 4), pairAt(text, 6), pairAt(text, 0)}));
  } else {
    FUZZ_EXPECT(color == Color::black());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = fuzz::Input(data, size).all();
  const Color color = colorFromHex(text);
  for (const double value : {color.red, color.green, color.blue, color.alpha})
    FUZZ_EXPECT(isComponent(value));
  FUZZ_EXPECT(color == colorFromHex("#" + text));
  FUZZ_EXPECT(color == colorFromHex(" \"" + text + "\";\n"));
  FUZZ_EXPECT(color == colorFromHex(upperCased(text)));
  checkDigits(text, color);
  return 0;
}
