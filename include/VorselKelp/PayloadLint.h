#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Notification.h"

namespace VorselKelp {

/// What a push payload will do, told without doing it: by the same tables and the same plan that the service
/// extension works with.
struct PayloadLint {
  enum class Root { push, campaign, none };

  /// What the notification will show once the service extension has prepared it. Of an ad-only push the ad
  /// decides.
  struct Shown {
    std::string title;
    std::optional<std::string> body;  ///< absent: as it came
    std::optional<platform::NotificationSound> sound;
    std::optional<std::string> category;
    std::vector<platform::NotificationAction> actions;
    std::optional<std::string> image;  ///< where it is downloaded from
  };

  /// One text that goes into the store.
  struct Stored {
    std::string key;
    std::string entry;  ///< of a map: the entry, with the inner key behind a slash; else empty
    std::string text;
  };

  Root root = Root::none;
  std::vector<std::string> errors;    ///< why it does not read, each with its path
  std::vector<std::string> stops;     ///< each way in which it stops an extension
  std::vector<std::string> warnings;  ///< what is most likely not meant so
  std::optional<Shown> shows;         ///< absent: as it came
  std::vector<std::string> requests;  ///< URLs requested while the notification is prepared, in order
  std::vector<Stored> stored;
};

/// Never stops the process and never blocks. `identifier` stands for the notification request's. Any thread;
/// needs no installed platform.
[[nodiscard]] VORSELKELP_API PayloadLint lintPayload(std::string_view json, const std::string& identifier);

/// The JSON Schema of "push", "campaign", "activity", "users", "configuration" or "ad", made from the table
/// that reads or writes it; absent for any other name.
[[nodiscard]] VORSELKELP_API std::optional<std::string> payloadSchema(std::string_view name);

}  // namespace VorselKelp
