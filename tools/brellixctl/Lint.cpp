#include <cstdio>

#include "VorselKelp/PayloadLint.h"
#include "VorselKelpLinux/NotificationRecords.h"
#include "brellixctl/Commands.h"
#include "brellixctl/PayloadFile.h"
#include "brellixctl/PlainText.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::JSONAny;
using VorselKelp::PayloadLint;
namespace device = VorselKelp::linux_platform;

namespace {

JSONAny orNull(const std::optional<std::string>& text) {
  return text ? JSONAny(*text) : JSONAny();
}

JSONAny rootName(PayloadLint::Root root) {
  if (root == PayloadLint::Root::push) return "push";
  if (root == PayloadLint::Root::campaign) return "campaign";
  return {};
}

/// Whether the push has a message of its own; else the body is up to the ad.
bool bringsMessage(const JSONAny& payload) {
  const auto* aps = payload.find("aps");
  const auto* alert = aps != nullptr ? aps->find("alert") : nullptr;
  const auto* message = alert != nullptr ? alert->find("n") : nullptr;
  return message != nullptr && message->as<JSONAny::Dictionary>() != nullptr;
}

/// A push that no extension sees is shown as it came, and nothing else happens. One that is seen keeps the
/// body it came with when it brings no other.
void applySystem(PayloadLint& lint, const JSONAny& payload) {
  if (lint.root != PayloadLint::Root::push) return;
  auto original = device::originalContent(payload);
  if (!wantsExtension(payload)) {
    auto& shown = lint.shows.emplace();
    shown.title = std::move(original.title);
    shown.body = std::move(original.body);
    shown.sound = std::move(original.sound);
    if (!original.categoryIdentifier.empty()) shown.category = std::move(original.categoryIdentifier);
    lint.requests.clear();
    lint.stored.clear();
  } else if (lint.shows && !lint.shows->body && bringsMessage(payload)) {
    lint.shows->body = std::move(original.body);
  }
}

JSONAny toJSON(const PayloadLint::Shown& shown) {
  JSONAny sound;
  if (shown.sound) sound = shown.sound->name.value_or("default");
  return JSONAny::Dictionary{{"title", shown.title},
                             {"body", orNull(shown.body)},
                             {"sound", std::move(sound)},
                             {"category", orNull(shown.category)},
                             {"actions", device::encodeActions(shown.actions)},
                             {"image", orNull(shown.image)}};
}

JSONAny listOf(const std::vector<std::string>& texts) {
  return JSONAny::List(texts.begin(), texts.end());
}

JSONAny toJSON(const PayloadLint& lint) {
  JSONAny::List stored;
  for (const auto& [key, entry, text] : lint.stored)
    stored.push_back(JSONAny::Dictionary{{"key", key}, {"entry", entry}, {"text", text}});
  return JSONAny::Dictionary{{"root", rootName(lint.root)},
                             {"errors", listOf(lint.errors)},
                             {"stops", listOf(lint.stops)},
                             {"warnings", listOf(lint.warnings)},
                             {"shows", lint.shows ? toJSON(*lint.shows) : JSONAny()},
                             {"requests", listOf(lint.requests)},
                             {"stored", std::move(stored)}};
}

std::string lines(const char* label, const std::vector<std::string>& texts) {
  std::string words;
  for (const auto& text : texts) words += "  " + std::string(label) + plainText(text) + '\n';
  return words;
}

std::string inWords(const PayloadLint::Shown& shown) {
  std::string words = lines("title    ", {shown.title});
  if (shown.body) words += lines("body     ", {*shown.body});
  words += lines("sound    ", {shown.sound ? shown.sound->name.value_or("default") : "none"});
  for (const auto& action : shown.actions) {
    const bool destructive = action.option == VorselKelp::platform::NotificationActionOption::destructive;
    words += lines("button   ",
                   {"[" + action.title + "] " + action.identifier + (destructive ? ", destructive" : "")});
  }
  if (shown.image) words += lines("image    ", {*shown.image});
  return words;
}

std::string inWords(const PayloadLint& lint) {
  std::string words = lint.root == PayloadLint::Root::push       ? "It reads as a push.\n"
                      : lint.root == PayloadLint::Root::campaign ? "It reads as a campaign.\n"
                                                                 : "It reads as nothing that is known.\n";
  words += lines("error    ", lint.errors) + lines("stops    ", lint.stops);
  words += lines("warning  ", lint.warnings);
  if (lint.shows) words += "It will show:\n" + inWords(*lint.shows);
  if (!lint.requests.empty()) words += "It requests:\n" + lines("", lint.requests);
  if (!lint.stored.empty()) words += "It stores:\n";
  for (const auto& [key, entry, text] : lint.stored)
    words += lines("", {key + (entry.empty() ? "" : " " + entry) + ": " + text});
  return words;
}

}  // namespace

int runLint(const CommonOptions& common, const LintRequest& request) {
  const auto bytes = readPayload(request.payloadPath);
  if (!bytes) return fail(bytes.error());
  auto lint = VorselKelp::lintPayload(*bytes, request.identifier);
  if (const auto payload = JSONAny::decode(*bytes)) applySystem(lint, *payload);
  if (common.json) {
    std::printf("%s\n", device::encodeLossy(toJSON(lint)).c_str());
  } else {
    printWords(inWords(lint));
  }
  return lint.root == PayloadLint::Root::none ? 1 : 0;
}

int runSchema(const std::string& name) {
  const auto schema = VorselKelp::payloadSchema(name);
  if (!schema) {
    return fail(Error{
        "There is no schema \"" + name + "\"; there are: push, campaign, activity, users, configuration, ad",
        wrongUsage});
  }
  std::printf("%s\n", schema->c_str());
  return 0;
}

}  // namespace brellixctl
