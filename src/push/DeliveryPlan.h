#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "VorselKelp/platform/Notification.h"
#include "push/PushTables.h"

namespace VorselKelp {

/// Everything that a single-message push makes the service extension do, decided before any of it is done.
/// The extension carries it out, and lint tells it: neither decides anything for itself.
struct DeliveryPlan {
  /// A push without a notification of its own: an ad is fetched and shown instead.
  struct Ad {
    std::string title;                 ///< unless the ad has one
    std::optional<bool> interstitial;  ///< stored for the later tap
    std::optional<std::string> endpoint;
  };

  struct Message {
    std::optional<platform::NotificationSound> sound;
    /// The buttons of the category that is made for it; absent when it gets none.
    std::optional<std::vector<Action>> category;
    std::optional<std::string> image;
    std::string title;
    std::optional<std::string> body;              ///< absent: stays as it came
    std::vector<std::string> impressionTrackers;  ///< as received: what forms no web URL is skipped
    std::optional<Conversion> target;
    std::optional<std::string> tag;
  };

  std::string identifier;
  std::optional<std::string> viewTracker;  ///< likewise
  std::variant<Ad, Message> kind;
};

[[nodiscard]] DeliveryPlan planDelivery(PushObj push, std::string identifier);

/// The identifier of the category made for a notification.
[[nodiscard]] std::string categoryIdentifier(const std::string& requestIdentifier);

/// The option of a button: the one that says no is destructive.
[[nodiscard]] platform::NotificationActionOption optionOf(const Action& action);

/// The URL text stored for an action: the server's placeholder in it becomes the action's identifier, or "0"
/// for the default tap.
[[nodiscard]] std::string storedUrl(const std::string& url, const std::string& action);

}  // namespace VorselKelp
