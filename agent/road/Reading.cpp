#include "road/Reading.h"

#include <utility>

#include "VorselKelpWebPush/Envelope.h"
#include "VorselKelpWebPush/Message.h"
#include "road/Clear.h"

namespace VorselKelp::agent {
namespace {

/// Encrypted ones begin with any byte, also with that of a payload in clear.
Result<std::string> textOf(const Message& message, const std::vector<webpush::ReceiverKeys>& keys,
                           bool plaintext) {
  Result<std::string> text = Error{"there are no keys"};
  for (const auto& pair : keys) {
    text = webpush::decrypt(message.bytes, pair);
    if (text) return text;
  }
  if (plaintext && isInClear(message.bytes)) return message.bytes;
  return text;
}

/// 0 means that nobody keeps the message on its way, and this one has come.
bool isLate(const webpush::Envelope& envelope, double now) {
  const auto expiration = envelope.expiration.value_or(0);
  return expiration != 0 && static_cast<double>(expiration) <= now;
}

}  // namespace

Result<std::optional<system::Push>> readMessage(const Message& message,
                                                const std::vector<webpush::ReceiverKeys>& keys,
                                                bool plaintext, double now) {
  const auto text = textOf(message, keys, plaintext);
  if (!text) return text.error();
  auto unwrapped = webpush::unwrap(*text);
  if (!unwrapped) return unwrapped.error();
  auto& [payload, envelope] = *unwrapped;
  if (isLate(envelope, now)) return std::optional<system::Push>();
  system::Push push{message.identifier, std::move(payload), envelope.collapse};
  if (!push.collapseKey.empty()) push.identifier = push.collapseKey;
  return std::optional(std::move(push));
}

}  // namespace VorselKelp::agent
