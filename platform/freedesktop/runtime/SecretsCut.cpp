#include "runtime/SecretsCut.h"

#include <glib.h>

#include "glib/Pointers.h"

namespace VorselKelp::freedesktop {
namespace {

constexpr const char* cutMark = "\u2026";

GRegex* compiled(const char* pattern) {
  // Bytes, whatever their encoding: a broken one must not keep a secret from being seen.
  constexpr auto flags = static_cast<GRegexCompileFlags>(G_REGEX_RAW | G_REGEX_CASELESS | G_REGEX_OPTIMIZE);
  return g_regex_new(pattern, flags, GRegexMatchFlags{}, nullptr);
}

std::string replaced(const GRegex* regex, const std::string& text) {
  const auto replacement = std::string("\\1\\2") + cutMark;
  const TextPtr result(g_regex_replace(regex, text.c_str(), static_cast<gssize>(text.size()), 0,
                                       replacement.c_str(), GRegexMatchFlags{}, nullptr));
  return result ? result.get() : "(a line that can't be shown)";
}

}  // namespace

std::string secretsCut(std::string_view text) {
  // In JSON, in JSON within a JSON text, in a query.
  static const GRegex* members =
      compiled(R"re(((?:endpoint|auth|p256dh)\\*["']?\s*[:=]\s*\\*["']?))re"
               R"re((https?:\\?/\\?/[^/\\"'\s@?#&,}]++(?!@))?(?:[^"'\\\s]|\\[^"'])++)re");
  static const GRegex* runs = compiled(R"re(([a-z0-9_+%=-]{8})()[a-z0-9_+%=-]{13,}+)re");
  std::string whole(text);
  for (auto& c : whole) {
    if (c == '\0') c = ' ';  // ends a text of the library below
  }
  return replaced(runs, replaced(members, whole));
}

}  // namespace VorselKelp::freedesktop
