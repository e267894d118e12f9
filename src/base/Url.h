#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace VorselKelp {

/// A text that forms a URL (RFC 3986, relative references included).
struct Url {
  std::string text;
  std::string scheme;  ///< as written; empty when relative
  std::string host;

  /// Absolute, with a host, and of scheme "http" or "https" in any letter case: what a request can go to.
  [[nodiscard]] bool isWeb() const;
};

/// Absent for the empty text, for blanks, control characters, bytes above 127 and broken escapes.
[[nodiscard]] std::optional<Url> parseUrl(std::string_view text);

/// Whether the text forms a URL that a request can go to.
[[nodiscard]] bool isWebUrl(std::string_view text);

/// `base` with one more path component, percent-encoded where need be; query and fragment of `base` stay.
[[nodiscard]] std::optional<std::string> appendingPathComponent(std::string_view base,
                                                                std::string_view component);

/// Percent-encoded for any place in a URL: only letters, digits, "-", ".", "_" and "~" stay.
[[nodiscard]] std::string escaped(std::string_view text);

/// The last component of the URL's path, decoded; empty when there is none.
[[nodiscard]] std::string lastPathComponent(std::string_view url);

}  // namespace VorselKelp
