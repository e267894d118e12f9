#include "brellixctl/try/Wording.h"

namespace brellixctl {

namespace platform = VorselKelp::platform;
using Opens = VorselKelp::PayloadLint::Tap::Opens;

std::string wordsFor(const std::vector<std::string>& texts) {
  std::string words;
  for (const auto& text : texts) words += (words.empty() ? "" : ", ") + text;
  return words.empty() ? "none" : words;
}

std::string wordsFor(const std::optional<std::string>& text) {
  return text.value_or("none");
}

std::string wordsFor(const std::optional<platform::NotificationSound>& sound) {
  return sound ? sound->name.value_or("default") : "none";
}

std::string wordsFor(const std::vector<platform::NotificationAction>& actions) {
  std::vector<std::string> words;
  for (const auto& action : actions) {
    const bool destructive = action.option == platform::NotificationActionOption::destructive;
    words.push_back("[" + action.title + "] " + action.identifier + (destructive ? " (destructive)" : ""));
  }
  return wordsFor(words);
}

std::string wordsFor(Opens opens, const std::string& url) {
  if (opens == Opens::nothing) return "nothing";
  if (opens == Opens::browser) return url + " in the browser";
  return url + (opens == Opens::deepLink ? " as a deep link" : " by the system");
}

}  // namespace brellixctl
