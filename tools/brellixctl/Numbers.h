#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace brellixctl {

/// Takes numbers from 0 to `most`; unlike the parser's own range no "nan".
inline CLI::Validator numberUpTo(double most, const std::string& unit) {
  const auto check = [most, unit](const std::string& text) {
    double number = 0;
    const bool fits = CLI::detail::lexical_cast(text, number) && number >= 0 && number <= most;
    return fits ? std::string()
                : "\"" + text + "\" is no number from 0 to " + std::to_string(static_cast<long long>(most)) +
                      " (" + unit + ")";
  };
  return CLI::Validator(check, "", "");
}

}  // namespace brellixctl
