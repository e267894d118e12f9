#pragma once

#include <string_view>

namespace VorselKelp {

/// Every key of the shared store. The texts are what installations carry data under, odd spellings included.
enum class StorageKey {
  installReported,
  tags,
  deepLinks,
  waitingDelivery,
  conversionTrackers,
  contentExtension,
  notification,
  adPending,
  eventEndpoint,
  utm,
  token,
  badge,
  pushRegistered,
  unsubscribedToken,
  extraParameters,
  beaconInterval,
  openCounter,
  autoConfiguration,
  adx,
  lastModified,
  crash,
  analytics,
  push,
  geofence,
  beacon,
  custom,
  location,
  appVersion,
  sdkVersion,
  category,
  scheduledId,
  schedulerInterval,
  notificationText,
  sessionNumber,
  sessionId,
  visitedCount,
  uniqueSessionId,
  uniqueSessionFirstTime,
  userId,
  partnerId,
  appOpenSavedAt,
  appOpenImagePath,
  appOpenCaptions,
  configUrl,
  userUrl,
  activityUrl,
  crashUrl,
  consent,
};

[[nodiscard]] std::string_view keyText(StorageKey key);

}  // namespace VorselKelp
