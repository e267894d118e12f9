#pragma once

namespace VorselKelp::ui {

/// A screen of the application. The application owns its controllers; the library never keeps one longer than
/// a call unless that call says so. Used on the main thread only.
class ViewController {
 public:
  ViewController() = default;
  ViewController(const ViewController&) = delete;
  ViewController& operator=(const ViewController&) = delete;
  virtual ~ViewController() = default;
};

}  // namespace VorselKelp::ui
