#pragma once

#include <memory>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelp/platform/UniqueFunction.h"

namespace VorselKelp::freedesktop {

/// Opens an address with the application that the user's desktop has for its scheme; in a sandbox the portal
/// does it. `answer` comes once, on the main queue: when the other application was started, or with the
/// reason why not. Refused are what is no absolute URL, what is longer than 8 KiB, and "file": links come
/// from afar.
///
/// Main thread, which has to run the default main context of GLib. Nothing blocks.
VORSELKELP_API void openUrl(const std::string& url, std::shared_ptr<platform::MainQueue> mainQueue,
                            platform::UniqueFunction<void(Status)> answer);

}  // namespace VorselKelp::freedesktop
