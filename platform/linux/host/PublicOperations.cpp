#include <charconv>

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpLinux/OperationTable.h"

namespace VorselKelp::linux_platform {
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

JSONAny setValueFor(const Call& call) {
  VorselKellp::setValueFor(call.text(0));
  return {};
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

}  // namespace

OperationTable publicOperations() {
  return OperationTable({
      {"isInitialised", "", false, &isInitialised},
      {"setValueFor", "t", false, &setValueFor},
      {"clearInstallationData", "", false, &plain<&VorselKellp::clearInstallationData>},
      {"updateScheduler", "", false, &plain<&VorselKellp::updateScheduler>},
      {"setUserValue", "tt", false, &setUserValue},
      {"sendCustomEvent", "tj", false, &sendCustomEvent},
      {"sendCustomTestTrack", "j", true, &sendCustomTestTrack},
      {"registerToken", "x", false, &registerToken},
      {"askForNotificationsPermission", "", false, &plain<&VorselKellp::askForNotificationsPermission>},
      {"askForNotificationPermissionWith", "", false, &askForNotificationPermissionWith},
  });
}

}  // namespace VorselKelp::linux_platform
