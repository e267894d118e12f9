#pragma once

#include <string>
#include <vector>

#include "VorselKelp/JSONAny.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/Notification.h"
#include "phone/Outcome.h"
#include "phone/Target.h"

namespace phone {

/// A remote notification that has come to the device.
struct Push {
  std::string identifier;  ///< empty: one is made
  std::string payload;     ///< a JSON object
  double timeLimit = 30;   ///< seconds that the application's processes have
};

struct PushOutcome : Outcome {
  VorselKelp::platform::NotificationRequest shown;
  std::vector<VorselKelp::platform::NotificationAction> actions;
  std::string extension;                      ///< answered, silent, timeLimit, stopped or notRun
  bool silent = false;                        ///< nothing is shown: the application got it in the background
  std::vector<VorselKelp::JSONAny> delegate;  ///< what a silent one made the library and the application call
};

/// Takes it through the service extension and shows it, or hands a silent one to the application, as the
/// device's system would. An error says why nothing came of it.
VorselKelp::Result<PushOutcome> deliver(const Target& target, Push push);

}  // namespace phone
