#include "VorselKelpSimulator/Installation.h"
#include "brellixctl/Answer.h"
#include "brellixctl/Commands.h"
#include "brellixctl/Reports.h"

namespace brellixctl {

using VorselKelp::JSONAny;
using VorselKelp::Result;
namespace device = VorselKelp::simulator;

namespace {

int tellState(const Target& target) {
  const auto off = target.device().isOff();
  if (!off) return fail(off.error());
  const auto waiting = target.arrivals().count();
  std::string words = *off ? "The device is off." : "The device is on.";
  if (waiting > 0) words += " Pushes that wait to be delivered: " + std::to_string(waiting) + '.';
  return answer({{"off", *off},
                 {"registered", target.device().remoteToken().has_value()},
                 {"waiting", static_cast<std::int64_t>(waiting)}},
                words + '\n', {});
}

int turnOff(const Target& target) {
  if (const auto status = target.device().setOff(true); !status) return fail(status.error());
  return answer({{"off", true}},
                "The device is off. Of the pushes to an application the last is kept until it is on.\n", {});
}

/// Delivers what was kept.
int turnOn(const Target& target) {
  if (const auto status = target.device().setOff(false); !status) return fail(status.error());
  JSONAny::List delivered;
  std::string words = "The device is on.\n", failure;
  const auto status = phone::deliverArrived(target, {}, [&](const Result<PushOutcome>& outcome) {
    const auto& reason = outcome ? outcome->failure : outcome.error().description;
    if (failure.empty()) failure = reason;
    if (!outcome) return;
    delivered.push_back(toJSON(*outcome));
    words += inWords(*outcome);
  });
  if (!status) return fail(status.error());
  return answer({{"off", false}, {"delivered", std::move(delivered)}}, words, failure);
}

int uninstallFrom(const Target& target) {
  if (const auto status = device::uninstall(target.home, target.manifest); !status)
    return fail(status.error());
  const auto& application = target.manifest.bundleIdentifier;
  return answer({{"uninstalled", application}},
                "The application " + application + " is no longer on the device.\n", {});
}

}  // namespace

int runDevice(const CommonOptions& common, const DeviceRequest& request) {
  const auto target = Target::open(common.home, common.manifest);
  if (!target) return fail(target.error());
  if (request.action == "off") return turnOff(*target);
  if (request.action == "on") return turnOn(*target);
  if (request.action == "uninstall") return uninstallFrom(*target);
  return tellState(*target);
}

}  // namespace brellixctl
