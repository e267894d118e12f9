#pragma once

#include <functional>
#include <memory>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelp/platform/ViewPresenter.h"
#include "VorselKelp/platform/WebViews.h"

namespace VorselKelp::linux_platform {

/// Hears of each screen that has appeared (true) or gone.
using ScreenListener = std::function<void(bool appeared)>;

/// Leads controllers through their life without drawing anything. `root` is held weakly, and may be null: no
/// window.
VORSELKELP_API std::shared_ptr<platform::ViewPresenter> makeHeadlessPresenter(
    const std::shared_ptr<ui::ViewController>& root, ScreenListener changed = [](bool) {});

/// What the simulated user answers on the publisher's permission page.
enum class PromptAnswer { ok, cancel, none };

/// Pages without an engine: scripts do not run and nothing is fetched. A page that a controller hands over as
/// text answers like `answer` on the "JSBridge" of its view, soon after; pages by URL, and scripts, fail.
/// `shown` learns the text of each page handed over.
VORSELKELP_API std::shared_ptr<platform::WebViews> makeHeadlessWebViews(
    std::shared_ptr<platform::MainQueue> mainQueue, PromptAnswer answer,
    std::function<void(const std::string& html)> shown);

/// No web engine at all: every load fails.
VORSELKELP_API std::shared_ptr<platform::WebViews> makeUnavailableWebViews(
    std::shared_ptr<platform::MainQueue> mainQueue);

}  // namespace VorselKelp::linux_platform
