#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "VorselKelp/platform/MainQueue.h"

namespace VorselKelp::agent {

/// Tells when nothing has happened for a while. Main thread; the queue must be closed before it goes.
class QuietTime {
 public:
  QuietTime(std::shared_ptr<platform::MainQueue> mainQueue, std::function<void()> over)
      : mainQueue_(std::move(mainQueue)), over_(std::move(over)) {}

  /// Something has happened: the time begins anew.
  void begin(double seconds);

 private:
  void wait(double seconds);

  const std::shared_ptr<platform::MainQueue> mainQueue_;
  const std::function<void()> over_;
  double end_ = 0;  ///< seconds, on the monotonic clock
  bool waiting_ = false;
};

}  // namespace VorselKelp::agent
