#pragma once

#include <optional>
#include <string>

namespace VorselKelp::platform {

/// The device as the process finds it. Any thread; values may change while the process lives (a journey
/// changes the time zone), except for the hardware.
class Device {
 public:
  virtual ~Device() = default;

  /// The machine field of the system's `uname` record, such as "iPhone13,2": the bytes up to the first zero.
  virtual std::string machineIdentifier() = 0;
  /// A variable of the process's environment. The library asks for SIMULATOR_MODEL_IDENTIFIER, by which a
  /// simulator says what hardware it stands for.
  virtual std::optional<std::string> environmentVariable(const std::string& name) = 0;
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
