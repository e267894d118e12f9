#include <charconv>

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpSimulator/OperationTable.h"
#include "host/RecordForms.h"

namespace VorselKelp::simulator {
namespace {

using Call = OperationTable::Call;

/// The bytes of a text that was checked to be hexadecimal.
std::vector<std::uint8_t> bytesOfHex(std::string_view text) {
  std::vector<std::uint8_t> bytes;
  for (; text.size() >= 2; text.remove_prefix(2)) {
    std::uint8_t byte = 0;
    std::from_chars(text.data(), text.data() + 2, byte, 16);
    bytes.push_back(byte);
  }
  return bytes;
}

/// A completion that takes an optional text: an absent one is a null among its arguments.
std::function<void(std::optional<std::string>)> textCompletion(const Call& call) {
  return [completed = call.completed](std::optional<std::string> text) {
    completed({text ? JSONAny(std::move(*text)) : JSONAny()});
  };
}

template <void (*operation)()>
JSONAny plain(const Call&) {
  operation();
  return {};
}

JSONAny isInitialised(const Call&) {
  return VorselKellp::isInitialised();
}

JSONAny setUserValue(const Call& call) {
  VorselKellp::setUserValue(call.text(0), call.text(1));
  return {};
}

JSONAny sendCustomEvent(const Call& call) {
  VorselKellp::sendCustomEvent(call.text(0), call.arguments[1]);
  return {};
}

JSONAny sendCustomTestTrack(const Call& call) {
  VorselKellp::sendCustomTestTrack(call.arguments[0], textCompletion(call));
  return {};
}

JSONAny registerToken(const Call& call) {
  VorselKellp::registerToken(bytesOfHex(call.text(0)));
  return {};
}

JSONAny askForNotificationPermissionWith(const Call& call) {
  VorselKellp::askForNotificationPermissionWith(call.process.rootController());
  return {};
}

JSONAny track(const Call& call) {
  VorselKellp::track(*call.arguments[0].as<JSONAny::Dictionary>());
  return {};
}

JSONAny sendTrack(const Call& call) {
  VorselKellp::sendTrack([completed = call.completed](std::optional<int> status,
                                                      std::optional<std::string> outcome,
                                                      const std::optional<Error>& error) {
    completed({status ? JSONAny(*status) : JSONAny(), outcome ? JSONAny(std::move(*outcome)) : JSONAny(),
               error ? JSONAny(error->description) : JSONAny()});
  });
  return {};
}

JSONAny getTrack(const Call&) {
  JSONAny::Dictionary parameters;
  for (auto& [key, value] : VorselKellp::getTrack()) parameters.push_back({key, value});
  return parameters;
}

template <void (*operation)(const std::string&)>
JSONAny withText(const Call& call) {
  operation(call.text(0));
  return {};
}

template <std::string (*operation)(const std::string&)>
JSONAny textFor(const Call& call) {
  return operation(call.text(0));
}

JSONAny setUtm(const Call& call) {
  VorselKellp::setUtm(call.text(0), call.text(1));
  return {};
}

/// Counts on the icon: there is no content that is being prepared in the application.
template <void (*operation)(const std::shared_ptr<platform::NotificationContent>&)>
JSONAny countOnIcon(const Call&) {
  operation(nullptr);
  return {};
}

JSONAny setAppBadge(const Call& call) {
  VorselKellp::setAppBadge(*call.arguments[0].as<std::int64_t>());
  return {};
}

platform::UserInfo userInfoOf(const JSONAny& object) {
  return platform::UserInfo(*object.as<JSONAny::Dictionary>());
}

JSONAny didReciveAdministrativeNotificationWith(const Call& call) {
  VorselKellp::didReciveAdministrativeNotificationWith(
      userInfoOf(call.arguments[0]), [completed = call.completed](const std::optional<Geofences>& geofences,
                                                                  const std::optional<Beacons>& beacons) {
        completed(
            {geofences ? encodeRecord(*geofences) : JSONAny(), beacons ? encodeRecord(*beacons) : JSONAny()});
      });
  return {};
}

JSONAny getNotificationContent(const Call& call) {
  platform::NotificationRequest request;
  request.content.userInfo = userInfoOf(call.arguments[0]);
  request.identifier = call.text(1);
  const auto object = VorselKellp::getNotificationContent(request);
  return object ? encodeRecord(*object) : JSONAny();
}

}  // namespace

OperationTable publicOperations() {
  using Core = VorselKellp;
  return OperationTable({
      {"isInitialised", "", false, &isInitialised},
      {"setValueFor", "t", false, &withText<&Core::setValueFor>},
      {"clearInstallationData", "", false, &plain<&Core::clearInstallationData>},
      {"updateScheduler", "", false, &plain<&Core::updateScheduler>},
      {"setUserValue", "tt", false, &setUserValue},
      {"sendCustomEvent", "tj", false, &sendCustomEvent},
      {"sendCustomTestTrack", "j", true, &sendCustomTestTrack},
      {"registerToken", "x", false, &registerToken},
      {"askForNotificationsPermission", "", false, &plain<&Core::askForNotificationsPermission>},
      {"askForNotificationPermissionWith", "", false, &askForNotificationPermissionWith},
      {"track", "o", false, &track},
      {"sendTrack", "", true, &sendTrack},
      {"getTrack", "", false, &getTrack},
      {"getTrackFor", "t", false, &textFor<&Core::getTrackFor>},
      {"removeTrack", "", false, &plain<&Core::removeTrack>},
      {"removeTrackFor", "t", false, &withText<&Core::removeTrackFor>},
      {"setUtm", "tt", false, &setUtm},
      {"getUtm", "t", false, &textFor<&Core::getUtm>},
      {"removeUtm", "t", false, &withText<&Core::removeUtm>},
      {"setNotification", "t", false, &withText<&Core::setNotification>},
      {"cancelScheduledNotifications", "", false, &plain<&Core::cancelScheduledNotifications>},
      {"addNotificationCount", "", false, &countOnIcon<&Core::addNotificationCount>},
      {"decreseNotificationCount", "", false, &countOnIcon<&Core::decreseNotificationCount>},
      {"setAppBadge", "i", false, &setAppBadge},
      {"didReciveAdministrativeNotificationWith", "o", true, &didReciveAdministrativeNotificationWith},
      {"getNotificationContent", "ot", false, &getNotificationContent},
  });
}

}  // namespace VorselKelp::simulator
