#pragma once

#include <string>

namespace VorselKelp::platform {

/// The browser sheet inside the application.
class InAppBrowser {
 public:
  virtual ~InAppBrowser() = default;

  /// Shows the page as a sheet on the key window's root controller, or on the controller that the root is
  /// already presenting. `url` is absolute and of scheme "http" or "https". Main thread.
  virtual void present(const std::string& url) = 0;
};

}  // namespace VorselKelp::platform
