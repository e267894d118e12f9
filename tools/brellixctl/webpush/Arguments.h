#pragma once

#include <string>

#include "VorselKelp/Result.h"
#include "VorselKelpWebPush/Subscription.h"
#include "VorselKelpWebPush/Vapid.h"

namespace brellixctl {

/// A subscription as its text, as hexadecimal digits, or as the file that holds either; "-" is standard
/// input.
VorselKelp::Result<VorselKelp::webpush::Subscription> readSubscription(const std::string& argument);

/// A sender's keys in one of their forms, or in the file that holds it; "-" is standard input.
VorselKelp::Result<VorselKelp::webpush::VapidKeys> readSenderKeys(const std::string& argument);

/// The header's value for the endpoint, good for the next twelve hours.
VorselKelp::Result<std::string> authorizationFor(const VorselKelp::webpush::VapidKeys& keys,
                                                 const std::string& endpoint, const std::string& subject);

}  // namespace brellixctl
