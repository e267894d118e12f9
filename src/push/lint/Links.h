#pragma once

#include <optional>
#include <string>
#include <vector>

namespace VorselKelp {

using LintLines = std::vector<std::string>;

// What is most likely not meant so about the URLs of a payload. `where` is the path of a URL or of a list.

void warnOfTracker(LintLines& warnings, const std::string& where, const std::string& url);
void warnOfTrackers(LintLines& warnings, const std::string& where,
                    const std::optional<std::vector<std::string>>& urls);
void warnOfPicture(LintLines& warnings, const std::string& where, const std::string& url);
/// A link that the application opens.
void warnOfLink(LintLines& warnings, const std::string& where, const std::string& url);
/// A link that the carousel gives to the system.
void warnOfPageLink(LintLines& warnings, const std::string& where, const std::string& url);

/// How to write a host that forms none because of its letters; begins with a semicolon, or is empty.
[[nodiscard]] std::string hostHint(const std::string& url);

/// The requests that texts lead to, of those that lead to one.
[[nodiscard]] std::vector<std::string> webRequests(const std::vector<std::string>& urls);

}  // namespace VorselKelp
