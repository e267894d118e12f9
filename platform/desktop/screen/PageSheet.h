#pragma once

#include <functional>
#include <memory>
#include <string>

#include "VorselKelp/platform/InAppBrowser.h"
#include "VorselKelp/platform/MainQueue.h"
#include "VorselKelpSimulator/HeadlessScreen.h"
#include "screen/Activity.h"
#include "screen/DesktopWindow.h"

namespace VorselKelp::desktop {

/// The in-app browser: a sheet over the window, with the page's address and a button that closes it. One page
/// at a time; the next one takes the place of the one before.
class PageSheetBrowser final : public platform::InAppBrowser {
 public:
  /// `picture` is asked for one, named "browser", when a page has been shown.
  PageSheetBrowser(std::weak_ptr<DesktopWindow> window, std::shared_ptr<platform::MainQueue> mainQueue,
                   std::shared_ptr<Activity> activity, std::function<void(const std::string&)> picture,
                   simulator::ScreenListener changed);
  ~PageSheetBrowser() override;
  void present(const std::string& url) override;

 private:
  class Sheet;
  const std::weak_ptr<DesktopWindow> window_;
  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const std::shared_ptr<Activity> activity_;
  const std::function<void(const std::string&)> picture_;
  const simulator::ScreenListener changed_;
  std::shared_ptr<Sheet> sheet_;
};

}  // namespace VorselKelp::desktop
