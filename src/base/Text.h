#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace VorselKelp {

[[nodiscard]] bool isValidUtf8(std::string_view text);

/// The shortest decimal text that reads back as the same double: from 1e-4 on and below 1e16 without an
/// exponent and always with a fraction (844.0, 0.5), else with an exponent (1e+16).
[[nodiscard]] std::string decimalText(double number);

[[nodiscard]] std::string replaceAll(std::string_view text, std::string_view what, std::string_view with);

/// Without the byte-order mark that some editors put in front.
[[nodiscard]] std::string_view withoutByteOrderMark(std::string_view text);

/// Without its backslashes.
[[nodiscard]] std::string withoutBackslashes(std::string_view text);

/// Two lower-case hexadecimal digits a byte.
[[nodiscard]] std::string hexText(const std::uint8_t* bytes, std::size_t count);

[[nodiscard]] constexpr bool isAsciiControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

/// ASCII letters only.
[[nodiscard]] std::string lowerCased(std::string_view text);

/// Without the white space and line breaks at both ends.
[[nodiscard]] std::string trimmed(std::string_view text);

/// Re-reads `text` as ASCII whose escapes stand for other characters: \uXXXX (two of them for a surrogate
/// pair), three octal digits behind a backslash, and a doubled backslash. Absent when a byte is above 127 or
/// an escape is broken.
[[nodiscard]] std::optional<std::string> fromNonLossyAscii(std::string_view text);

/// A file name that is safe in any folder: the last component of `suggested`, other characters than letters,
/// digits, full stop, hyphen and underscore replaced, no leading full stop, at most 64 bytes, never empty.
[[nodiscard]] std::string safeFileName(std::string_view suggested);

/// FNV-1a, 64 bits: the same on every machine and in every process.
[[nodiscard]] std::uint64_t stableHash(std::string_view text);

}  // namespace VorselKelp
