#include "crypto/OpenSsl.h"

#include <openssl/err.h>
#include <openssl/rand.h>

namespace VorselKelp::webpush {

Error cryptoError(const std::string& what) {
  const auto code = ERR_peek_last_error();
  const char* reason = code != 0 ? ERR_reason_error_string(code) : nullptr;
  ERR_clear_error();
  return {reason != nullptr ? what + ": " + reason : what};
}

Result<std::string> randomText(std::size_t count) {
  std::string bytes(count, '\0');
  if (RAND_bytes(bytesOf(bytes), static_cast<int>(count)) != 1)
    return cryptoError("There are no random bytes");
  return bytes;
}

}  // namespace VorselKelp::webpush
