#include "push/lint/Texts.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>

#include "VorselKelp/platform/Notification.h"
#include "base/Text.h"

namespace VorselKelp {
namespace {

constexpr std::size_t mostButtons = 4;  // that systems show

bool isBlank(const std::string& text) {
  return trimmed(text).empty();
}

/// Whether a person who reads `text` sees an escape: a backslash before "u" or before a digit.
bool showsEscape(std::string_view text) {
  for (auto at = text.find('\\'); at != std::string_view::npos; at = text.find('\\', at + 1)) {
    const char next = at + 1 < text.size() ? text[at + 1] : '\0';
    if (next == 'u' || (next >= '0' && next <= '9')) return true;
  }
  return false;
}

/// The ending of another kind of sound than the one that is looked for; empty when there is none.
std::string_view foreignSound(const std::string& lowerName) {
  constexpr std::array<std::string_view, 7> endings = {".aif", ".aiff", ".caf", ".m4a",
                                                       ".mp3", ".ogg",  ".flac"};
  const auto found = std::ranges::find_if(endings, [&](auto ending) { return lowerName.ends_with(ending); });
  return found == endings.end() ? std::string_view() : *found;
}

void warnOfButton(LintLines& warnings, const std::string& where, const Action& button) {
  if (button.action.empty()) {
    warnings.push_back(where + ".action: empty; give the button an identifier");
  } else if (button.action == platform::defaultActionIdentifier ||
             button.action == platform::dismissActionIdentifier) {
    warnings.push_back(where + ".action: \"" + button.action + "\" is the system's own");
  }
  if (isBlank(button.title)) warnings.push_back(where + ".title: empty; the button has no label");
}

}  // namespace

void warnOfTitle(LintLines& warnings, const std::string& where, const std::string& sent,
                 const std::string& shown) {
  if (isBlank(shown)) {
    warnings.push_back(where + ": empty");
  } else if (showsEscape(shown)) {
    warnings.push_back(where + ": \"" + shown + "\" is shown with its escapes; " +
                       (fromNonLossyAscii(sent)
                            ? "they are escaped twice"
                            : "one of them is broken, or stands beside other letters than "
                              "ASCII ones, and then none is decoded"));
  }
}

void warnOfPlainText(LintLines& warnings, const std::string& where, const std::string& sent) {
  if (isBlank(sent)) {
    warnings.push_back(where + ": empty");
  } else if (showsEscape(sent)) {
    warnings.push_back(where + ": \"" + sent +
                       "\" is shown with its escapes; only the title of a push is decoded");
  }
}

void warnOfSound(LintLines& warnings, const std::string& where, const std::string& name) {
  const auto lower = lowerCased(name);
  const std::string file = "\"" + name + ".wav\"";
  if (isBlank(name)) {
    warnings.push_back(where + ": empty; leave it out for the system's sound");
  } else if (lower.ends_with(".wav")) {
    warnings.push_back(where + ": \"" + name + "\" has its ending already; " + file + " is looked for");
  } else if (!foreignSound(lower).empty()) {
    warnings.push_back(where + ": \"" + name + "\" is no .wav file; " + file + " is looked for");
  } else if (name.find_first_of("/\\") != std::string::npos || std::ranges::any_of(name, isAsciiControl)) {
    warnings.push_back(where + ": \"" + name + "\" is no name of a file in the application's bundle");
  }
}

void warnOfButtons(LintLines& warnings, const std::string& where, const std::vector<Action>& actions) {
  std::set<std::string> seen;
  for (std::size_t i = 0; i < actions.size(); ++i) {
    const std::string here = where + "[" + std::to_string(i) + "]";
    warnOfButton(warnings, here, actions[i]);
    if (!seen.insert(actions[i].action).second)
      warnings.push_back(here + ".action: \"" + actions[i].action +
                         "\" is another button's too; both open what the last one with a url opens");
  }
  if (actions.size() > mostButtons) {
    const std::string first = actions[mostButtons].title;
    warnings.push_back(where + ": more than four buttons; systems show four, and \"" + first +
                       "\" is the first that is left out");
  }
}

}  // namespace VorselKelp
