#pragma once

#include <optional>
#include <vector>

#include "VorselKelp/Result.h"
#include "VorselKelpSystem/Delivery.h"
#include "VorselKelpWebPush/ReceiverKeys.h"
#include "state/State.h"

namespace VorselKelp::agent {

/// What a message brings: its payload, decrypted, without what a gateway has put into it. A collapse
/// identifier of the gateway's becomes the notification's own, so that it replaces what is shown under it.
/// Absent when the message has come too late to be wanted. `now` is in seconds since 1970; `plaintext`: it
/// may be unencrypted.
Result<std::optional<system::Push>> readMessage(const Message& message,
                                                const std::vector<webpush::ReceiverKeys>& keys,
                                                bool plaintext, double now);

}  // namespace VorselKelp::agent
