#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "VorselKelp/ui/Orientation.h"

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
  /// The operating system's own name, such as "iOS" or "Debian GNU/Linux". Token reports tell it.
  virtual std::string systemName() = 0;
  /// What kind of system that is, such as "iOS" or "Linux". Activities tell it, and in lower case the
  /// publisher's events.
  virtual std::string systemFamily() = 0;
  /// Who made the hardware, such as "Apple"; empty when nobody knows. Token reports tell it.
  virtual std::string manufacturer() = 0;
  /// The hardware's name as its buyer knows it. Absent where the machine's identifier stands for it: then
  /// reports tell the name that the library knows for that.
  virtual std::optional<std::string> productName() = 0;
  /// The language of the user's locale, such as "en".
  virtual std::string languageCode() = 0;
  /// Seconds that the local time is ahead of GMT at this moment; negative in the west.
  virtual int secondsFromGMT() = 0;
  virtual ui::DeviceOrientation orientation() = 0;
};

/// Ticks whenever the screen is refreshed, on the main thread, while it is not paused. Destroying it ends it.
class DisplayLink {
 public:
  virtual ~DisplayLink() = default;
  virtual void setPaused(bool paused) = 0;
};

/// The main screen. Any thread, but for display links.
class Screen {
 public:
  virtual ~Screen() = default;
  virtual double width() = 0;   ///< points
  virtual double height() = 0;  ///< points
  /// Made paused. `tick` gets the time of the refresh, in seconds of a clock that never goes back; it is
  /// never called inside a call of the link. Main thread. Never null: without a screen nothing ever ticks.
  virtual std::unique_ptr<DisplayLink> makeDisplayLink(std::function<void(double seconds)> tick) = 0;
};

}  // namespace VorselKelp::platform
