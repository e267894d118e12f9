#include "VorselKelpPosix/SafeName.h"

#include <cstdint>
#include <cstdio>

namespace VorselKelp::posix {
namespace {

constexpr std::size_t longest = 180;
constexpr std::size_t keptOfLong = 140;

bool isPlain(char c, bool first) {
  const bool alphanumeric = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
  return alphanumeric || c == '-' || c == '_' || (c == '.' && !first);
}

std::uint64_t fnv1a(std::string_view text, std::uint64_t hash) {
  for (const char c : text) {
    hash ^= static_cast<unsigned char>(c);
    hash *= 0x100000001b3;
  }
  return hash;
}

}  // namespace

std::string safeName(std::string_view text) {
  static constexpr char digits[] = "0123456789ABCDEF";
  if (text.empty()) return "%";
  std::string name;
  for (const char c : text) {
    if (isPlain(c, name.empty())) {
      name += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      name += {'%', digits[byte >> 4], digits[byte & 15]};
    }
    if (name.size() > longest) break;
  }
  if (name.size() <= longest) return name;

  // Two hashes with different starts make 128 bits; '~' is never a plain byte, so no shortened name equals a
  // whole one.
  char hash[40];
  std::snprintf(hash, sizeof hash, "~%016llx%016llx",
                static_cast<unsigned long long>(fnv1a(text, 0xcbf29ce484222325)),
                static_cast<unsigned long long>(fnv1a(text, 0x9e3779b97f4a7c15)));
  return name.substr(0, keptOfLong) + hash;
}

}  // namespace VorselKelp::posix
