#include "brellixctl/device/DeviceOptions.h"

namespace brellixctl {

void addDeviceOptions(CLI::App& device, DeviceRequest& request) {
  device
      .add_option("ACTION", request.action,
                  "off: the last push is kept; on: what was kept is delivered; uninstall: removes the "
                  "application; without one says how it stands")
      ->check(CLI::IsMember({"on", "off", "uninstall"}));
}

}  // namespace brellixctl
