#pragma once

#include <string>
#include <string_view>

#include "VorselKelp/Result.h"
#include "VorselKelpWebPush/Subscription.h"
#include "crypto/CurveKey.h"

namespace VorselKelp::webpush {

/// A message of this content, text, delimiter and padding, with this key and this salt, of which no other
/// message may have both.
Result<std::string> sealMessage(std::string_view content, const Subscription& subscription,
                                const CurveKey& sender, std::string_view salt);

}  // namespace VorselKelp::webpush
