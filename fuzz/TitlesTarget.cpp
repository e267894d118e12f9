// Titles and the other texts of a message, and every form that they are brought into.

#include <algorithm>
#include <cstdio>
#include <string>

#include "base/Text.h"
#include "base/Url.h"
#include "push/DeliveryPlan.h"
#include "support/Expect.h"
#include "support/Input.h"

namespace {

using namespace VorselKelp;

/// The escaped form of a text of plain ASCII and control characters.
std::string nonLossy(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    char octal[8];
    std::snprintf(octal, sizeof octal, "\\%03o", static_cast<unsigned char>(c));
    escaped += c == '\\' ? "\\\\" : c < ' ' ? octal : std::string(1, c);
  }
  return escaped;
}

void checkTitle(const std::string& text) {
  const auto read = fromNonLossyAscii(text);
  if (read) {
    FUZZ_EXPECT(isValidUtf8(*read));
    FUZZ_EXPECT(read->size() <= text.size());
  }
  const bool ascii = std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
  if (ascii) FUZZ_EXPECT(fromNonLossyAscii(nonLossy(text)) == text);
  if (!ascii) FUZZ_EXPECT(!read);
}

void checkPlan(const std::string& text, const std::string& other) {
  PushObj push;
  auto& body = push.aps.notificationBody;
  body.title = text;
  body.n.emplace().body = other;
  body.n->sound = other;
  body.n->tag = text;
  body.n->actions = {Action{other, text, text}};
  const auto plan = planDelivery(push, other);
  FUZZ_EXPECT(plan.identifier == other);
  const auto& message = std::get<DeliveryPlan::Message>(plan.kind);
  FUZZ_EXPECT(message.title == fromNonLossyAscii(text).value_or(text));
  FUZZ_EXPECT(message.body == other && message.tag == text);
  FUZZ_EXPECT(message.sound->name == other + ".wav");
  const bool destructive =
      optionOf(body.n->actions->front()) == platform::NotificationActionOption::destructive;
  FUZZ_EXPECT(destructive == (text.size() == 2 && (text[0] | 0x20) == 'n' && (text[1] | 0x20) == 'o'));
}

void checkSubstitution(const std::string& text, const std::string& other) {
  const std::string placeholder = "${VA_BACID}";
  const auto stored = storedUrl(text + placeholder + text, other);
  // What is put in is not searched again, so it may bring a placeholder of its own along.
  if (other.find('$') == std::string::npos && text.find('$') == std::string::npos) {
    FUZZ_EXPECT(stored == text + other + text || other == platform::defaultActionIdentifier);
  }
  FUZZ_EXPECT(withoutBackslashes(text).find('\\') == std::string::npos);
  if (!other.empty()) FUZZ_EXPECT(replaceAll(text, other, other) == text);
  if (!other.empty()) FUZZ_EXPECT(replaceAll(text, other, "").size() <= text.size());
}

void checkFileName(const std::string& text) {
  const auto name = safeFileName(text);
  FUZZ_EXPECT(!name.empty() && name.size() <= 64 && name.front() != '.');
  FUZZ_EXPECT(name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-") ==
              std::string::npos);
  FUZZ_EXPECT(safeFileName(name) == name);
  FUZZ_EXPECT(!safeFileName(lastPathComponent(text)).empty());
}

void checkUrls(const std::string& text, const std::string& other) {
  const auto url = parseUrl(text);
  if (url) FUZZ_EXPECT(parseUrl(url->text)->text == url->text);
  if (url) FUZZ_EXPECT(text.size() >= url->scheme.size() + url->host.size());
  if (isWebUrl(text)) FUZZ_EXPECT(url && !url->host.empty());
  const auto joined = appendingPathComponent(text, other);
  FUZZ_EXPECT(!joined || parseUrl(*joined) || joined->empty());
  const auto percent = escaped(text);
  FUZZ_EXPECT(percent.empty() == text.empty());
  if (!text.empty()) FUZZ_EXPECT(parseUrl("https://h/" + percent));
  if (!text.empty()) FUZZ_EXPECT(lastPathComponent("https://h/" + percent) == text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::string other = input.untilNul();
  const std::string text = input.empty() ? other : input.all();
  checkTitle(text);
  checkPlan(text, other);
  checkSubstitution(text, other);
  checkFileName(text);
  checkUrls(text, other);
  FUZZ_EXPECT(trimmed(trimmed(text)) == trimmed(text));
  return 0;
}
