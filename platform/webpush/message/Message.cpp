#include "VorselKelpWebPush/Message.h"

#include <array>
#include <cstdint>

#include "crypto/CurveKey.h"
#include "message/SealedMessage.h"
#include "records/Derivation.h"
#include "records/Record.h"

namespace VorselKelp::webpush {
namespace {

// A message is a head (salt, size of a record, length of the sender's key, the key) and a record behind it.
constexpr std::size_t keyAt = saltSize + 5;
constexpr std::size_t headSize = keyAt + pointSize;
constexpr std::size_t authSize = 16;
constexpr std::size_t leastRecord = tagSize + 2;
constexpr char lastRecord = '\x02';
constexpr char furtherRecord = '\x01';

static_assert(headSize + mostInClear + 1 + tagSize == mostEncrypted);

struct Parts {
  std::string_view salt;
  std::string_view senderPoint;
  std::string_view record;
};

std::uint32_t numberAt(std::string_view bytes) {
  std::uint32_t number = 0;
  for (const char byte : bytes.substr(0, 4)) number = number << 8 | static_cast<unsigned char>(byte);
  return number;
}

std::string sizes(std::size_t is, const std::string& bound) {
  return std::to_string(is) + " bytes, " + bound;
}

Result<Parts> takeApart(std::string_view message) {
  if (message.size() > mostEncrypted)
    return Error{"The message is too large: " + sizes(message.size(), "4096 at most")};
  if (message.size() < keyAt) return Error{"The message ends in its head"};
  const auto keySize = static_cast<unsigned char>(message[keyAt - 1]);
  if (keySize != pointSize) return Error{"The message's sender has a key of " + sizes(keySize, "not of 65")};
  if (message.size() < headSize) return Error{"The message ends in its sender's key"};
  const Parts parts{message.substr(0, saltSize), message.substr(keyAt, pointSize), message.substr(headSize)};
  const auto recordSize = numberAt(message.substr(saltSize));
  if (recordSize < leastRecord)
    return Error{"The message's records are said to have " + sizes(recordSize, "18 at least")};
  if (parts.record.size() > recordSize)
    return Error{"The message has several records: each of " + std::to_string(recordSize) + " bytes"};
  if (parts.record.size() <= tagSize) return Error{"The message's record is too short for text and tag"};
  return parts;
}

/// What both sides derive from their keys.
Result<Secret<32>> messageSecret(const CurveKey& own, const CurveKey& other, std::string_view auth,
                                 std::string_view receiverPoint, std::string_view senderPoint) {
  const auto agreed = own.agree(other);
  if (!agreed) return agreed.error();
  std::string purpose("WebPush: info\0", 14);
  purpose.append(receiverPoint).append(senderPoint);
  return derive<32>(auth, agreed->text(), purpose);
}

Result<std::string> withoutPadding(std::string content) {
  const auto end = content.find_last_not_of('\0');
  if (end == std::string::npos) return Error{"The message is padding alone, without a delimiter"};
  if (content[end] == furtherRecord) return Error{"The message's only record announces another one"};
  if (content[end] != lastRecord) return Error{"The message's text does not end with a delimiter"};
  content.resize(end);
  return content;
}

}  // namespace

Result<std::string> decrypt(std::string_view message, const ReceiverKeys& keys) {
  if (keys.auth.size() != authSize) return Error{"The receiver's secret has not 16 bytes"};
  const auto parts = takeApart(message);
  if (!parts) return parts.error();
  const auto own = CurveKey::ofPair(keys.privateKey, keys.publicKey);
  if (!own) return Error{"The receiver's key: " + own.error().description};
  const auto sender = CurveKey::ofPoint(parts->senderPoint);
  if (!sender) return Error{"The message's sender: " + sender.error().description};
  const auto secret = messageSecret(*own, *sender, keys.auth, keys.publicKey, parts->senderPoint);
  if (!secret) return secret.error();
  auto content = openRecord(parts->record, secret->text(), parts->salt);
  if (!content) return content;
  return withoutPadding(*std::move(content));
}

Result<std::string> sealMessage(std::string_view content, const Subscription& subscription,
                                const CurveKey& sender, std::string_view salt) {
  const auto receiver = CurveKey::ofPoint(subscription.p256dh);
  if (!receiver) return Error{"The subscription's key: " + receiver.error().description};
  const auto senderPoint = sender.point();
  const auto secret = messageSecret(sender, *receiver, subscription.auth, subscription.p256dh, senderPoint);
  if (!secret) return secret.error();
  const auto record = sealRecord(content, secret->text(), salt);
  if (!record) return record;
  std::string message(salt);
  // Records are said to have 4096 bytes, more than the only one has: so there is no other.
  message.append({'\0', '\0', '\x10', '\0', static_cast<char>(pointSize)});
  return message.append(senderPoint).append(*record);
}

Result<std::string> encrypt(std::string_view text, const Subscription& subscription, std::size_t padding) {
  if (text.size() > mostInClear || padding > mostInClear - text.size())
    return Error{"The text is too large: " + sizes(text.size(), "with its padding 3993 at most")};
  if (subscription.auth.size() != authSize) return Error{"The subscription's secret has not 16 bytes"};
  const auto sender = CurveKey::make();
  const auto salt = randomText(saltSize);
  if (!sender || !salt) return sender ? salt.error() : sender.error();
  std::string content(text);
  content.push_back(lastRecord);
  content.append(padding, '\0');
  return sealMessage(content, subscription, *sender, *salt);
}

}  // namespace VorselKelp::webpush
