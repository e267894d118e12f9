#include "phone/Target.h"

namespace phone {

using VorselKelp::Error;
using VorselKelp::Result;
namespace device = VorselKelp::simulator;

Result<Target> Target::describe(const std::string& homePath, const std::string& manifestPath) {
  if (homePath.empty()) return Error{"Name the simulated device's folder with --home DIR", wrongUsage};
  if (manifestPath.empty()) return Error{"Name the application's manifest with --app FILE", wrongUsage};
  auto manifest = device::loadManifest(manifestPath);
  if (!manifest) return manifest.error();
  return Target{homePath, manifestPath, std::move(*manifest), device::DeviceHome(homePath)};
}

Result<Target> Target::open(const std::string& homePath, const std::string& manifestPath) {
  auto target = describe(homePath, manifestPath);
  if (!target) return target;
  if (const auto status = target->device().open(); !status) return Error{status.error().description};
  return target;
}

std::string Target::program(device::ProcessKind kind) const {
  const auto own = [](const std::string& named, const char* example) {
    return named.empty() ? example : named;
  };
  if (kind == device::ProcessKind::serviceExtension) return own(manifest.programs.service, "news_service");
  if (kind == device::ProcessKind::contentExtension) return own(manifest.programs.content, "news_content");
  return own(manifest.programs.application, "news_app");
}

}  // namespace phone
