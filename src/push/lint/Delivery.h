#pragma once

#include <string>

#include "VorselKelp/PayloadLint.h"
#include "push/DeliveryPlan.h"
#include "push/PushTables.h"

namespace VorselKelp {

/// Tells what the service extension makes of a push that it sees.
void tellDelivery(PayloadLint& lint, const DeliveryPlan& plan);

/// Tells what taps on the notification and on its buttons do, from what is shown and stored.
void tellTaps(PayloadLint& lint, const std::string& identifier);

/// The requests that an ad which this payload leaves pending brings with a tap.
[[nodiscard]] std::vector<std::string> adFollowUpRequests(const PayloadLint& lint);

/// Warns of what such a push is most likely not meant to do.
void warnOfPush(PayloadLint& lint, const NotificationBody& body, const DeliveryPlan& plan);

}  // namespace VorselKelp
