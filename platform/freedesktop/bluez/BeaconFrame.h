#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "VorselKelp/platform/LocationManager.h"
#include "glib/Pointers.h"

namespace VorselKelp::freedesktop {

/// The beacon that a frame announces: what a device sent under the company number of beacons.
[[nodiscard]] std::optional<platform::Beacon> parseBeaconFrame(std::span<const std::uint8_t> frame);

/// The beacon that a device is, by its properties (a{sv}) on the bus.
[[nodiscard]] std::optional<platform::Beacon> beaconOf(GVariant* deviceProperties);

}  // namespace VorselKelp::freedesktop
