#pragma once

#include <functional>
#include <optional>

#include "VorselKelp/LocationRecords.h"
#include "VorselKelp/platform/Notification.h"
#include "core/CoreContext.h"

namespace VorselKelp {

/// The lists of an administrative push; at most one of them is there.
struct AdministrativePush {
  std::optional<Geofences> geofences;
  std::optional<Beacons> beacons;
};

/// Geofences when the push carries such a list, else beacons. Entries without a required member are left out.
[[nodiscard]] AdministrativePush administrativePush(const platform::UserInfo& userInfo);

/// Hands over the geofences or the beacons of a silent administrative push. With push off, and for any other
/// push, `completion` is not called.
void readAdministrativePush(
    CoreContext& context, const platform::UserInfo& userInfo,
    const std::function<void(std::optional<Geofences>, std::optional<Beacons>)>& completion);

}  // namespace VorselKelp
