#include "VorselKelpSimulator/Runtime.h"

#include "VorselKelpSystem/Process.h"

namespace VorselKelp::simulator {
namespace {

system::Machine machineOf(const Manifest& manifest) {
  system::Machine machine;
  machine.identifier = manifest.machine;
  machine.systemVersion = manifest.systemVersion;
  machine.screenWidth = manifest.screenWidth;
  machine.screenHeight = manifest.screenHeight;
  return machine;
}

}  // namespace

std::string bundleIdentifierOf(const Manifest& manifest, ProcessKind kind) {
  switch (kind) {
    case ProcessKind::application:
      break;
    case ProcessKind::serviceExtension:
      return manifest.bundleIdentifier + ".service";
    case ProcessKind::contentExtension:
      return manifest.bundleIdentifier + ".content";
  }
  return manifest.bundleIdentifier;
}

std::shared_ptr<platform::BundleInformation> makeBundleInformation(const Manifest& manifest,
                                                                   ProcessKind kind) {
  return system::makeBundle(bundleIdentifierOf(manifest, kind), manifest.version,
                            kind == ProcessKind::application ? manifest.properties : system::BundleTexts());
}

std::shared_ptr<platform::Device> makeDevice(const Manifest& manifest) {
  return system::makeDevice(machineOf(manifest));
}

std::shared_ptr<platform::Screen> makeScreen(const Manifest& manifest) {
  return system::makeScreen(machineOf(manifest));
}

}  // namespace VorselKelp::simulator
