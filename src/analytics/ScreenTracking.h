#pragma once

#include <memory>

#include "VorselKelp/platform/Application.h"
#include "core/CoreContext.h"

namespace VorselKelp {

/// Counts the screens visited in the session. Main thread.
class ScreenTracking : public platform::ScreenObserver, public std::enable_shared_from_this<ScreenTracking> {
 public:
  explicit ScreenTracking(std::shared_ptr<CoreContext> context) : context_(std::move(context)) {}

  /// Puts the hooks in place; a second call takes them away again, a third one puts them back.
  void exchange();

  void screenDidAppear() override;
  void screenDidDisappear() override {}

 private:
  std::shared_ptr<CoreContext> context_;
  bool hooked_ = false;
};

}  // namespace VorselKelp
