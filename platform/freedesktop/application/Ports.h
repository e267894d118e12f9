#pragma once

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "VorselKelp/platform/InAppBrowser.h"
#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelpSystem/RunningApplication.h"

namespace VorselKelp::freedesktop {

// What the parts of a running application ask of the desktop.

/// Opens addresses with what the desktop has for them; an error is a line on standard error.
class DesktopUrlOpener final : public system::UrlOpener {
 public:
  explicit DesktopUrlOpener(std::shared_ptr<platform::MainQueue> mainQueue)
      : mainQueue_(std::move(mainQueue)) {}
  void open(const std::string& url) override;

 private:
  const std::shared_ptr<platform::MainQueue> mainQueue_;
};

/// Web pages in the application where it shows them, else in the desktop's browser.
class ArticleBrowser final : public platform::InAppBrowser {
 public:
  ArticleBrowser(std::function<bool(const std::string&)> show, std::shared_ptr<system::UrlOpener> opener)
      : show_(std::move(show)), opener_(std::move(opener)) {}
  void present(const std::string& url) override {
    if (!show_ || !show_(url)) opener_->open(url);
  }

 private:
  const std::function<bool(const std::string&)> show_;
  const std::shared_ptr<system::UrlOpener> opener_;
};

/// Keeps the application's main loop running. The application must outlive the main queue's work.
class ApplicationHold final : public system::BackgroundHold {
 public:
  ApplicationHold(GApplication* application, std::shared_ptr<platform::MainQueue> mainQueue)
      : application_(application), mainQueue_(std::move(mainQueue)) {}
  /// At once on the main thread: the last window may be about to go.
  void hold() override {
    if (g_main_context_is_owner(g_main_context_default())) return g_application_hold(application_);
    mainQueue_->async([application = application_] { g_application_hold(application); });
  }
  void release() override {
    mainQueue_->async([application = application_] { g_application_release(application); });
  }

 private:
  GApplication* const application_;
  const std::shared_ptr<platform::MainQueue> mainQueue_;
};

}  // namespace VorselKelp::freedesktop
