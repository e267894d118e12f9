#include "brellixctl/fleet/FleetOptions.h"

#include "brellixctl/Numbers.h"

namespace brellixctl {

namespace {

/// How much a fleet sends, how fast, and what of it may fail.
void addLoad(CLI::App& fleet, FleetRequest& request) {
  fleet.add_option("--opened", request.opened, "Percent of the notifications that are opened, 0 to 100")
      ->type_name("PERCENT")
      ->check(numberUpTo(100, "percent"))
      ->capture_default_str();
  fleet.add_option("--rate", request.rate, "Launches and notifications a second at most; 0 for any number")
      ->type_name("N")
      ->check(numberUpTo(1e6, "steps a second"))
      ->capture_default_str();
  fleet
      .add_option("--duration", request.duration,
                  "Send notifications for so many seconds, in place of --pushes")
      ->type_name("SECONDS")
      ->check(numberUpTo(86400, "seconds"));
  fleet
      .add_option("--fail-above", request.failAbove,
                  "Exit with 1 only when more than this percentage of the requests failed")
      ->type_name("PERCENT")
      ->check(numberUpTo(100, "percent"))
      ->capture_default_str();
  fleet.add_option("--connections", request.connections, "Requests under way at a time")
      ->check(CLI::Range(1, 256))
      ->capture_default_str();
}

/// The notifications come from outside.
void addGateway(CLI::App& fleet, FleetRequest& request) {
  auto* gateway = fleet.add_flag("--gateway", request.gateway,
                                 "Wait for the notifications of your own server, which speaks the provider "
                                 "protocol, until each device has had its --pushes");
  fleet.add_option("--port", request.port, "The gateway's port; 0 for any free one")
      ->needs(gateway)
      ->capture_default_str();
  fleet.add_flag("--open", request.open, "Take notifications without a provider's token")->needs(gateway);
  fleet.add_option("--tokens", request.tokens, "Write the devices' tokens here, hexadecimal, one a line")
      ->type_name("FILE");
}

}  // namespace

void addFleetOptions(CLI::App& fleet, FleetRequest& request) {
  fleet.add_option("--devices", request.devices, "How many devices")
      ->check(CLI::Range(1, 1'000'000))
      ->capture_default_str();
  fleet.add_option("--pushes", request.pushes, "Notifications for each device")
      ->check(CLI::Range(0, 1'000'000))
      ->capture_default_str();
  fleet.add_option("--server", request.server, "Scheme, host and port of the server; else one of its own")
      ->type_name("URL");
  fleet.add_flag("--anywhere", request.anywhere,
                 "Let requests of payloads and answers go to servers of their own, not to --server alone");
  fleet
      .add_option("--payload", request.payloads,
                  "A notification, a JSON file; several are sent in turn; without one a sample is")
      ->type_name("FILE")
      ->allow_extra_args(false);
  addLoad(fleet, request);
  addGateway(fleet, request);
}

}  // namespace brellixctl
