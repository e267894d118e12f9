#include "VorselKelpSystem/NotificationRecords.h"
#include "brellixctl/PlainText.h"
#include "brellixctl/Reports.h"

namespace brellixctl {

using VorselKelp::JSONAny;
namespace platform = VorselKelp::platform;
namespace system = VorselKelp::system;

namespace {

std::string textOf(const JSONAny& value) {
  const auto* text = value.as<std::string>();
  return text != nullptr ? *text : system::encodeLossy(value);
}

std::string line(std::string_view label, const std::string& text) {
  std::string padded(label);
  padded.resize(std::max<std::size_t>(padded.size() + 1, 14), ' ');
  return "  " + padded + plainText(text) + "\n";
}

std::string consoleInWords(const std::vector<JSONAny>& console) {
  if (console.empty()) return {};
  std::string words = "The console said:\n";
  for (const auto& text : console) {
    words += "  | ";
    for (const char c : plainText(textOf(text), true)) {
      words += c;
      if (c == '\n') words += "  | ";
    }
    words += '\n';
  }
  return words;
}

std::string callInWords(const JSONAny& call) {
  const auto* name = call.find("name");
  const auto* arguments = call.find("arguments");
  auto words = name != nullptr ? textOf(*name) : std::string("?");
  const auto* list = arguments != nullptr ? arguments->as<JSONAny::List>() : nullptr;
  words += '(';
  if (list != nullptr) {
    for (std::size_t i = 0; i < list->size(); ++i)
      words += (i > 0 ? ", " : "") + system::encodeLossy((*list)[i]);
  }
  return words + ')';
}

const char* extensionInWords(const std::string& word) {
  if (word == "answered") return "The service extension prepared it.";
  if (word == "silent") return "The service extension never answered; the original is shown.";
  if (word == "timeLimit") return "The service extension's time ended; what it had by then is shown.";
  if (word == "stopped") return "The service extension stopped; the original is shown.";
  return "It asks for no service extension (\"mutable-content\" is not 1); it is shown as it came.";
}

}  // namespace

std::string inWords(const LaunchOutcome& outcome) {
  std::string words = outcome.initialised ? "The application started, and the library is initialised.\n"
                                          : "The application started, but the library is not initialised.\n";
  words += line("permission", outcome.authorisation);
  words += line("token", outcome.token.value_or("none"));
  for (const auto& call : outcome.delegate) words += line("delegate", callInWords(call));
  for (const auto& result : outcome.results) words += line("result", system::encodeLossy(result));
  return words + consoleInWords(outcome.console);
}

std::string inWords(const platform::NotificationRequest& request,
                    const std::vector<platform::NotificationAction>& actions) {
  const auto& content = request.content;
  std::string words = line("notification", request.identifier) + line("title", content.title);
  if (!content.subtitle.empty()) words += line("subtitle", content.subtitle);
  words += line("body", content.body);
  words += line("sound", content.sound ? content.sound->name.value_or("default") : "none");
  if (content.badge) words += line("badge", std::to_string(*content.badge));
  for (const auto& action : actions) {
    const bool destructive = action.option == platform::NotificationActionOption::destructive;
    words +=
        line("button", "[" + action.title + "] " + action.identifier + (destructive ? ", destructive" : ""));
  }
  for (const auto& attachment : content.attachments) words += line("attachment", attachment.path);
  return words;
}

std::string inWords(const PushOutcome& outcome) {
  if (outcome.kept) {
    return "The device is off: the push is kept in its home, and delivered by brellixctl device on.\n" +
           line("notification", outcome.shown.identifier);
  }
  if (outcome.silent) {
    std::string words =
        "The push is silent: nothing is shown, and the application got it in the background.\n";
    for (const auto& call : outcome.delegate) words += line("delegate", callInWords(call));
    return words + consoleInWords(outcome.console);
  }
  return "The notification was delivered. " + std::string(extensionInWords(outcome.extension)) + "\n" +
         inWords(outcome.shown, outcome.actions) + consoleInWords(outcome.console);
}

std::string inWords(const ShowOutcome& outcome) {
  if (outcome.stopped) {
    return "The content extension stopped; the notification is shown without its area.\n" +
           consoleInWords(outcome.console);
  }
  if (!outcome.carousel || outcome.carousel->as<JSONAny::Dictionary>() == nullptr)
    return "The content extension shows no carousel.\n" + consoleInWords(outcome.console);
  const auto member = [&](const char* name) {
    const auto* value = outcome.carousel->find(name);
    return value != nullptr ? *value : JSONAny();
  };
  std::string words = "The content extension shows message " + textOf(member("position")) + ".\n";
  words += line("title", textOf(member("title"))) + line("body", textOf(member("body")));
  words += line("image", textOf(member("image"))) + line("arrows", textOf(member("arrows")));
  if (outcome.opened) words += line("opened", textOf(*outcome.opened));
  return words + consoleInWords(outcome.console);
}

std::string inWords(const TapOutcome& outcome) {
  std::string words = "The application got the response.\n";
  if (outcome.browser) words += line("browser", textOf(*outcome.browser));
  if (outcome.deepLink) words += line("deep link", textOf(*outcome.deepLink));
  if (outcome.completion) {
    const bool nothing = outcome.completion->as<VorselKelp::JSONNull>() != nullptr;
    words += line("handed back", nothing ? "nothing" : textOf(*outcome.completion));
  }
  if (!outcome.browser && !outcome.deepLink && !outcome.completion) words += "  Nothing was opened.\n";
  return words + consoleInWords(outcome.console);
}

}  // namespace brellixctl
