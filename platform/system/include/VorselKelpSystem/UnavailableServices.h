#pragma once

#include <memory>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Platform.h"

namespace VorselKelp::system {

/// What an extension has in place of an application: events never come, and what is asked for is refused.
VORSELKELP_API std::shared_ptr<platform::Application> makeUnavailableApplication();

/// Finds nothing, ever. The refusal is a line on standard error.
VORSELKELP_API std::shared_ptr<platform::LocationServices> makeUnavailableLocation();

/// Shows no page: an extension has no window. The refusal is a line on standard error.
VORSELKELP_API std::shared_ptr<platform::InAppBrowser> makeUnavailableBrowser();

/// Presents nothing: an extension has no window. The refusal is a line on standard error.
VORSELKELP_API std::shared_ptr<platform::ViewPresenter> makeUnavailablePresenter();

/// Pages of which every load and every script fails, on the main queue.
VORSELKELP_API std::shared_ptr<platform::WebViews> makeUnavailableWebViews(
    std::shared_ptr<platform::MainQueue> mainQueue);

}  // namespace VorselKelp::system
