#pragma once

#include <memory>

namespace VorselKelp::platform {

/// A counting semaphore, made with the value 0. Any thread.
class Semaphore {
 public:
  virtual ~Semaphore() = default;
  virtual void signal() = 0;
  /// Takes one signal, waiting for at most `seconds`; false when none came in that time.
  virtual bool wait(double seconds) = 0;
};

/// Time. Any thread.
class Clock {
 public:
  virtual ~Clock() = default;

  /// Wall-clock seconds since 1970 (UTC), with a fraction. It may jump, like the clock of any device.
  virtual double now() = 0;

  /// A semaphore whose waits run on this clock, so that a clock that is moved by hand ends them by hand.
  virtual std::shared_ptr<Semaphore> makeSemaphore() = 0;
};

}  // namespace VorselKelp::platform
