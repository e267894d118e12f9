#pragma once

#include "VorselKelp/platform/URLSession.h"
#include "gateway/Notification.h"

namespace gateway {

/// What a provider is answered for a push service's answer, or for none.
Answer answerOf(const VorselKelp::platform::URLResult& result);

}  // namespace gateway
