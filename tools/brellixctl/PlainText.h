#pragma once

#include <string>
#include <string_view>

namespace brellixctl {

/// `text` as a terminal may get it: control characters, in which the terminal's own commands hide, appear as
/// "\xNN" byte by byte, except line feeds when `lines`; bytes that are no UTF-8 become replacement
/// characters.
std::string plainText(std::string_view text, bool lines = false);

/// Both write `text`, which is meant for a person, as plain text of lines.
void printWords(const std::string& text);
/// With a line feed.
void printErrorLine(const std::string& text);

}  // namespace brellixctl
