#pragma once

#include <string>
#include <string_view>

namespace brellixctl {

/// `text` as the text or the attribute of an HTML page; bytes that are no UTF-8 become replacement
/// characters.
[[nodiscard]] std::string escapedHTML(std::string_view text);

}  // namespace brellixctl
