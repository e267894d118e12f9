#pragma once

#include <memory>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Platform.h"
#include "VorselKelpSimulator/Manifest.h"

namespace VorselKelp::simulator {

/// Which process of the application this is. The extensions have bundles, stores and containers of their own.
enum class ProcessKind { application, serviceExtension, contentExtension };

/// The bundle identifier of the process: the application's, for extensions with ".service" or ".content"
/// added.
VORSELKELP_API std::string bundleIdentifierOf(const Manifest& manifest, ProcessKind kind);

/// The manifest's "properties" belong to the application's bundle alone.
VORSELKELP_API std::shared_ptr<platform::BundleInformation> makeBundleInformation(const Manifest& manifest,
                                                                                  ProcessKind kind);

/// Machine and system version from the manifest, language and time zone from the environment of the process;
/// held as the manifest's screen is: upright, or lying on its side when that is wider than high.
VORSELKELP_API std::shared_ptr<platform::Device> makeDevice(const Manifest& manifest);

/// A screen that nobody looks at: it has a size and is never refreshed.
VORSELKELP_API std::shared_ptr<platform::Screen> makeScreen(const Manifest& manifest);

}  // namespace VorselKelp::simulator
