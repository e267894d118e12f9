#pragma once

#include <memory>

#include "VorselKelpLinux/ProcessScreen.h"

namespace VorselKelp::desktop {

/// A window on the user's desktop, with GTK, and web pages in WebKitGTK:
///   runApplication(argc, argv, application, operations, *VorselKelp::desktop::makeDesktopScreen());
/// Opening it fails where there is no display.
std::shared_ptr<linux_platform::ProcessScreen> makeDesktopScreen();

}  // namespace VorselKelp::desktop
