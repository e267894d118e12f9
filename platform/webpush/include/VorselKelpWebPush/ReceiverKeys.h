#pragma once

#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"

namespace VorselKelp::webpush {

/// What a receiver keeps to itself, so that it can read what was encrypted for its subscription.
struct ReceiverKeys {
  std::string privateKey;  ///< 32 bytes: a number, its highest byte first
  std::string publicKey;   ///< 65 bytes: its uncompressed point on P-256, a subscription's `p256dh`
  std::string auth;        ///< 16 bytes
};

/// New ones; an error only when the cryptographic library fails. Any thread.
VORSELKELP_API Result<ReceiverKeys> makeReceiverKeys();

}  // namespace VorselKelp::webpush
