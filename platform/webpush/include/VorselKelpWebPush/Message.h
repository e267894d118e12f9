#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelpWebPush/ReceiverKeys.h"
#include "VorselKelpWebPush/Subscription.h"

namespace VorselKelp::webpush {

// Messages as push services carry them: one record of "aes128gcm" (RFC 8188), with keys agreed upon as RFC
// 8291 has it. Sizes are in bytes. Any thread.

/// The most that every push service takes, and what of it is left for text and padding.
inline constexpr std::size_t mostEncrypted = 4096;
inline constexpr std::size_t mostInClear = 3993;

/// The text of a message. An error says in one line what is wrong with a message that was not encrypted for
/// these keys, was changed on its way, or is built otherwise.
VORSELKELP_API Result<std::string> decrypt(std::string_view message, const ReceiverKeys& keys);

/// A message that only the subscription's owner can read, with a key of its own. Padding hides the text's
/// size; both together may be `mostInClear`.
VORSELKELP_API Result<std::string> encrypt(std::string_view text, const Subscription& subscription,
                                           std::size_t padding = 0);

}  // namespace VorselKelp::webpush
