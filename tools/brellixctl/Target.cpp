#include "brellixctl/Operations.h"

namespace brellixctl {

using VorselKelp::Error;
using VorselKelp::Result;
namespace device = VorselKelp::linux_platform;

Result<Target> Target::open(const std::string& homePath, const std::string& manifestPath) {
  if (homePath.empty()) return Error{"Name the simulated device's folder with --home DIR", wrongUsage};
  if (manifestPath.empty()) return Error{"Name the application's manifest with --app FILE", wrongUsage};
  auto manifest = device::loadManifest(manifestPath);
  if (!manifest) return manifest.error();
  Target target{homePath, manifestPath, std::move(*manifest), device::DeviceHome(homePath)};
  if (const auto status = target.device().open(); !status) return Error{status.error().description};
  return target;
}

}  // namespace brellixctl
