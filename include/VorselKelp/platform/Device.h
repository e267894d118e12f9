#pragma once

#include <string>

namespace VorselKelp::platform {

/// The device as the process finds it. Any thread; values may change while the process lives (a journey
/// changes the time zone), except for the hardware.
class Device {
 public:
  virtual ~Device() = default;

  /// The machine field of the system's `uname` record, such as "iPhone13,2": the bytes as they are. When the
  /// process environment has SIMULATOR_MODEL_IDENTIFIER, that value stands in for it.
  virtual std::string machineIdentifier() = 0;
  /// The operating system's version, such as "17.4".
  virtual std::string systemVersion() = 0;
  virtual std::string systemName() = 0;
  /// The language of the user's locale, such as "en".
  virtual std::string languageCode() = 0;
  /// Seconds that the local time is ahead of GMT at this moment; negative in the west.
  virtual int secondsFromGMT() = 0;
};

/// The main screen, in points. Any thread.
class Screen {
 public:
  virtual ~Screen() = default;
  virtual double width() = 0;
  virtual double height() = 0;
};

}  // namespace VorselKelp::platform
