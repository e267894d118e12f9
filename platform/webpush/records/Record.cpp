#include "records/Record.h"

#include "records/Derivation.h"

namespace VorselKelp::webpush {
namespace {

constexpr std::size_t keySize = 16;
constexpr std::size_t nonceSize = 12;

struct RecordKeys {
  Secret<keySize> key;
  Secret<nonceSize> nonce;  ///< the first record's
};

/// The purposes end with a NUL.
Result<RecordKeys> recordKeys(std::string_view secret, std::string_view salt) {
  using namespace std::string_view_literals;
  const auto key = derive<keySize>(salt, secret, "Content-Encoding: aes128gcm\0"sv);
  const auto nonce = derive<nonceSize>(salt, secret, "Content-Encoding: nonce\0"sv);
  if (!key || !nonce) return (key ? nonce.error() : key.error());
  return RecordKeys{*key, *nonce};
}

/// AES-128 in Galois counter mode, ready for one record; null when OpenSSL fails.
Cipher begin(const RecordKeys& keys, bool sealing) {
  static EVP_CIPHER* const aes = EVP_CIPHER_fetch(nullptr, "AES-128-GCM", nullptr);
  Cipher cipher(EVP_CIPHER_CTX_new());
  if (cipher == nullptr || EVP_CipherInit_ex2(cipher.get(), aes, keys.key.bytes.data(),
                                              keys.nonce.bytes.data(), sealing ? 1 : 0, nullptr) != 1)
    return nullptr;
  return cipher;
}

}  // namespace

Result<std::string> sealRecord(std::string_view content, std::string_view secret, std::string_view salt) {
  const auto keys = recordKeys(secret, salt);
  if (!keys) return keys.error();
  const auto cipher = begin(*keys, true);
  std::string record(content.size() + tagSize, '\0');
  auto* out = bytesOf(record);
  int written = 0;
  if (cipher == nullptr ||
      EVP_EncryptUpdate(cipher.get(), out, &written, bytesOf(content), static_cast<int>(content.size())) !=
          1 ||
      EVP_EncryptFinal_ex(cipher.get(), out + written, &written) != 1 ||
      EVP_CIPHER_CTX_ctrl(cipher.get(), EVP_CTRL_AEAD_GET_TAG, tagSize, out + content.size()) != 1)
    return cryptoError("The text could not be encrypted");
  return record;
}

Result<std::string> openRecord(std::string_view record, std::string_view secret, std::string_view salt) {
  if (record.size() < tagSize) return Error{"The record is too short for its tag"};
  const auto keys = recordKeys(secret, salt);
  if (!keys) return keys.error();
  const auto cipher = begin(*keys, false);
  std::string content(record.size() - tagSize, '\0');
  std::string tag(record.substr(content.size()));
  int written = 0;
  if (cipher == nullptr ||
      EVP_DecryptUpdate(cipher.get(), bytesOf(content), &written, bytesOf(record),
                        static_cast<int>(content.size())) != 1 ||
      EVP_CIPHER_CTX_ctrl(cipher.get(), EVP_CTRL_AEAD_SET_TAG, tagSize, tag.data()) != 1)
    return cryptoError("The record could not be decrypted");
  if (EVP_DecryptFinal_ex(cipher.get(), bytesOf(content) + written, &written) != 1) {
    OPENSSL_cleanse(content.data(), content.size());
    return cryptoError("The message was encrypted for other keys, or changed on its way");
  }
  return content;
}

}  // namespace VorselKelp::webpush
