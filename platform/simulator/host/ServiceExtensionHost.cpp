#include "VorselKelpSimulator/ServiceExtensionHost.h"

#include "VorselKelpSystem/ServiceRun.h"
#include "VorselKelpSystem/ShortLife.h"
#include "host/ExitStatus.h"
#include "host/HostedProcess.h"

namespace VorselKelp::simulator {
namespace {

constexpr double serviceTimeLimit = 30;

}  // namespace

int runServiceExtension(int argc, const char* const* argv, ServiceExtension& extension) {
  system::prepareShortLife();
  auto options = readOptions(argc, argv);
  if (!options) return exitWith(options.error().description, 2);
  auto manifest = loadManifest(options->manifest);
  if (!manifest) return exitWith(manifest.error().description, 1);
  auto payload = system::readServicePayload(options->payload);
  if (!payload) return exitWith(payload.error().description, 1);
  const HostedProcess process(std::move(*options), std::move(*manifest), serviceTimeLimit);
  const auto device = std::make_shared<SimulatedDevice>(process.home, process.manifest.bundleIdentifier);
  system::runService({process.loop, process.session, process.channel, process.deadline,
                      process.home.temporaryFolder(process.manifest, ProcessKind::serviceExtension)},
                     makePlatform(process.manifest, ProcessKind::serviceExtension, process.home,
                                  process.extensionServices(device)),
                     process.options.identifier, *std::move(payload), extension,
                     [&] { extension.willStart(process.manifest); });
  return 0;
}

}  // namespace VorselKelp::simulator
