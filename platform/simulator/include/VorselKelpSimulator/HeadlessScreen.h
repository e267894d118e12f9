#pragma once

#include <functional>
#include <memory>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelp/platform/URLSession.h"
#include "VorselKelp/platform/ViewPresenter.h"
#include "VorselKelp/platform/WebViews.h"

namespace VorselKelp::simulator {

/// Hears of each screen that has appeared (true) or gone.
using ScreenListener = std::function<void(bool appeared)>;

/// Leads controllers through their life without drawing anything. `root` is held weakly, and may be null: no
/// window.
VORSELKELP_API std::shared_ptr<platform::ViewPresenter> makeHeadlessPresenter(
    const std::shared_ptr<ui::ViewController>& root, ScreenListener changed = [](bool) {});

/// What the simulated user answers on the publisher's permission page.
enum class PromptAnswer { ok, cancel, none };

/// Pages without an engine: scripts do not run. A page that a controller hands over as text fetches its
/// script file with `session`, and then answers like `answer` on the "JSBridge" of its view; one whose
/// configuration is no JSON is dead, as it would be in an engine, and answers nothing. Pages by URL, and
/// scripts, fail.
VORSELKELP_API std::shared_ptr<platform::WebViews> makeHeadlessWebViews(
    std::shared_ptr<platform::MainQueue> mainQueue, std::shared_ptr<platform::URLSession> session,
    PromptAnswer answer);

/// No web engine at all: every load fails.
VORSELKELP_API std::shared_ptr<platform::WebViews> makeUnavailableWebViews(
    std::shared_ptr<platform::MainQueue> mainQueue);

}  // namespace VorselKelp::simulator
