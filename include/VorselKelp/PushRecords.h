#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "VorselKelp/LocationRecords.h"

/// What the push server puts into a remote notification's user information. All texts are UTF-8 and stand as
/// they were received; nothing in them may be trusted. Fields without a comment are carried for the
/// application and mean what its server takes them to mean.
namespace VorselKelp {

/// One button.
struct Action {
  std::string action;              ///< the action's identifier
  std::string title;               ///< the button's label
  std::optional<std::string> url;  ///< opened when the button is tapped
  friend bool operator==(const Action&, const Action&) = default;
};

/// What opening the notification does.
struct Conversion {
  std::string url;                            ///< opened on a tap
  std::optional<std::vector<std::string>> t;  ///< click trackers, requested on a tap
  friend bool operator==(const Conversion&, const Conversion&) = default;
};

/// One notification.
struct N {
  std::optional<bool> renotify;
  std::optional<std::int64_t> el;
  std::optional<std::string> ap;
  std::optional<std::string> an;
  std::optional<std::string> tc;
  std::optional<std::string> dc;
  std::optional<std::int64_t> cl;  ///< present and not 0: no category and no image
  std::optional<std::string> tag;
  std::optional<std::string> sound;  ///< without its ".wav"
  std::optional<std::vector<std::int64_t>> vibrate;
  std::optional<std::string> badge;
  std::optional<std::string> image;  ///< URL of the picture to attach
  std::optional<std::string> body;
  std::optional<std::vector<Action>> actions;
  std::optional<Conversion> data;
  std::optional<bool> silent;  ///< true: delivered without sound
  std::optional<std::string> tid;
  std::optional<bool> scl;
  friend bool operator==(const N&, const N&) = default;
};

/// One message of a campaign.
struct P {
  std::optional<std::vector<std::string>> i;  ///< impression trackers
  N o;
  std::optional<std::string> t;  ///< title
  friend bool operator==(const P&, const P&) = default;
};

/// The messages handed to the carousel.
struct MultiMessagePush {
  std::optional<std::vector<P>> p;
  std::optional<bool> isMultiple;
};

/// One received notification, flattened for the application and for tracking.
struct VorselReceivedObject {
  std::optional<std::string> notifId;  ///< the request's identifier, the same for all messages of a campaign
  std::optional<std::string> title;
  std::optional<bool> renotify;
  std::optional<std::int64_t> el;
  std::optional<std::string> ap;
  std::optional<std::string> an;
  std::optional<std::string> tc;
  std::optional<std::string> dc;
  std::optional<std::int64_t> cl;
  std::optional<std::string> tag;
  std::optional<std::string> sound;
  std::optional<std::vector<std::int64_t>> vibrate;
  std::optional<std::string> badge;
  std::optional<std::string> image;
  std::optional<std::string> body;
  std::optional<std::vector<Action>> actions;
  std::optional<Conversion> data;
  std::optional<bool> silent;
  std::optional<std::vector<std::string>> impTracker;  ///< impression trackers of this message
  std::optional<std::string> taskId;                   ///< `N::tid`
  std::optional<bool> scl;
  friend bool operator==(const VorselReceivedObject&, const VorselReceivedObject&) = default;
};

/// One decoded push: one element for a single message, one per message of a campaign, in display order.
struct NotificationObject {
  std::vector<VorselReceivedObject> notification;
};

}  // namespace VorselKelp
