#pragma once

#include <cstdint>
#include <functional>
#include <utility>

#include "VorselKelpSystem/RunningApplication.h"

namespace VorselKelp::simulator {

/// Shows badges with the screen of the process, until that is closed.
class ScreenBadge final : public system::Badge {
 public:
  explicit ScreenBadge(std::function<void(std::int64_t)> show) : show_(std::move(show)) {}

  void show(std::int64_t number) override {
    if (show_) show_(number);
  }
  /// When nobody uses it any more: what the screen gave holds the screen.
  void close() { show_ = nullptr; }

 private:
  std::function<void(std::int64_t)> show_;
};

}  // namespace VorselKelp::simulator
