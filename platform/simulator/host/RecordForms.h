#pragma once

#include "VorselKelp/JSONAny.h"
#include "VorselKelp/PushRecords.h"

namespace VorselKelp::simulator {

// What operations hand back, as JSON: each field under its own name, absent ones left out.

JSONAny encodeRecord(const NotificationObject& object);
JSONAny encodeRecord(const Geofences& geofences);
JSONAny encodeRecord(const Beacons& beacons);

}  // namespace VorselKelp::simulator
