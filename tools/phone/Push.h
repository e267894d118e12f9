#pragma once

#include <stop_token>
#include <string>
#include <vector>

#include "VorselKelp/JSONAny.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/FunctionRef.h"
#include "VorselKelp/platform/Notification.h"
#include "phone/Outcome.h"
#include "phone/Target.h"

namespace phone {

/// A remote notification that has come to the device.
struct Push {
  std::string identifier;  ///< empty: one is made
  std::string payload;     ///< a JSON object
  double timeLimit = 30;   ///< seconds that the application's processes have
  bool quiet = false;      ///< tells no person at a terminal that it takes its time
  std::stop_token stop{};  ///< ends a delivery under way
};

// Errors of a delivery that carry a code.
/// The user or the application does not want it: a phone drops it without a word.
inline constexpr int notWanted = 3;
/// It was stopped, or the device could not keep it: it can be tried again.
inline constexpr int notNow = 4;

struct PushOutcome : Outcome {
  VorselKelp::platform::NotificationRequest shown;
  std::vector<VorselKelp::platform::NotificationAction> actions;
  std::string extension;                      ///< answered, silent, timeLimit, stopped or notRun
  bool silent = false;                        ///< nothing is shown: the application got it in the background
  bool kept = false;                          ///< the device is off: it is delivered when that is on again
  std::vector<VorselKelp::JSONAny> delegate;  ///< what a silent one made the library and the application call
};

/// Takes it through the service extension and shows it, or hands a silent one to the application, as the
/// system of a device that is on would. An error says why nothing came of it.
VorselKelp::Result<PushOutcome> deliver(const Target& target, Push push);

/// The same behind all that lies undelivered in the device's home; keeps it there if the device is off.
VorselKelp::Result<PushOutcome> receive(const Target& target, Push push);

/// Told what each push came to. One that was not wanted is not told.
using Told = VorselKelp::platform::FunctionRef<void(const VorselKelp::Result<PushOutcome>&)>;

/// Delivers what lies undelivered in the home of a device that is on. An error when the home is of no use.
VorselKelp::Status deliverArrived(const Target& target, const std::stop_token& stop, Told told);

}  // namespace phone
