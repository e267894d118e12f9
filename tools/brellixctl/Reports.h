#pragma once

#include <string>

#include "brellixctl/Operations.h"

namespace brellixctl {

// What the operations' outcomes look like, as JSON for a script and in words for a person: lines of plain
// text.

VorselKelp::JSONAny::Dictionary toJSON(const LaunchOutcome& outcome);
VorselKelp::JSONAny::Dictionary toJSON(const PushOutcome& outcome);
VorselKelp::JSONAny::Dictionary toJSON(const TapOutcome& outcome);
VorselKelp::JSONAny::Dictionary toJSON(const ShowOutcome& outcome);
/// The members that describe a notification, in every command's output alike.
VorselKelp::JSONAny::Dictionary notificationJSON(
    const VorselKelp::platform::NotificationRequest& request,
    const std::vector<VorselKelp::platform::NotificationAction>& actions);

std::string inWords(const LaunchOutcome& outcome);
std::string inWords(const PushOutcome& outcome);
std::string inWords(const TapOutcome& outcome);
std::string inWords(const ShowOutcome& outcome);
/// A notification as a phone would show it.
std::string inWords(const VorselKelp::platform::NotificationRequest& request,
                    const std::vector<VorselKelp::platform::NotificationAction>& actions);

}  // namespace brellixctl
