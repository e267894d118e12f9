#pragma once

#include <optional>
#include <string>

#include "gateway/Notification.h"
#include "gateway/provider/Request.h"

namespace gateway {

/// A new UUID in lower case.
std::string makeIdentifier();

/// The one that the provider gave, as it stands; empty without a usable one.
std::string identifierOf(const Request& request);

/// Reads the request's fields into the notification, the identifier where there is one; everything but token
/// and payload. Answers what is wrong with them.
std::optional<Answer> readFields(const Request& request, Notification& notification);

}  // namespace gateway
