#pragma once

#include "VorselKelpSimulator/ContentExtensionHost.h"

namespace news {

/// Shows a carousel with the library itself or with the publisher's layer above it, as the manifest says; a
/// real extension would know at compile time.
class NewsContent final : public VorselKelp::simulator::ContentExtension {
 public:
  void willStart(const VorselKelp::simulator::Manifest& manifest) override;
  VorselKelp::ui::Size preferredContentSize(
      const VorselKelp::platform::DeliveredNotification& notification) override;
  std::shared_ptr<VorselKelp::ui::ViewController> makeController(
      std::shared_ptr<VorselKelp::platform::ExtensionContext> context) override;

 private:
  bool facade_ = false;
};

}  // namespace news
