#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace VorselKelp {

/// A text that forms a URL (RFC 3986, relative references included).
struct Url {
  std::string text;  ///< in the characters of URLs alone: what requests, browsers and applications are given
  std::string scheme;  ///< as written; empty when relative
  std::string host;

  /// Absolute, with a host, and of scheme "http" or "https" in any letter case: what a request can go to.
  [[nodiscard]] bool isWeb() const;
};

/// What other characters path, query and fragment hold, as people write them, is percent-encoded: brackets,
/// quotes, blanks, letters beyond ASCII, a "%" that begins no escape. Escapes stay. Absent for the empty
/// text, for blanks at either end, for control characters, for what is not UTF-8, and where scheme or host
/// hold a character that they can't.
[[nodiscard]] std::optional<Url> parseUrl(std::string_view text);

/// Whether the text's host is written in other letters than ASCII ones, so that it forms no URL.
[[nodiscard]] bool hasForeignHost(std::string_view text);

/// The URL of the request that the text leads to; absent when none can go there.
[[nodiscard]] std::optional<std::string> webUrl(std::string_view text);

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
