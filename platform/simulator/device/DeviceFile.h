#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "VorselKelp/JSONAny.h"
#include "VorselKelp/Result.h"
#include "VorselKelp/platform/FunctionRef.h"

namespace VorselKelp::simulator {

/// What a device knows about itself: how far its clock is ahead, whether it is off, and which applications
/// are registered. A small JSON file, for every process of the device reads the clock, and a database would
/// be dear for that. It is read whole and replaced whole, so no reader sees half of it. Several processes at
/// once; any thread.
class DeviceFile {
 public:
  struct Registration {
    std::string token;  ///< bytes; kept while the application is not registered
    bool registered = false;
    /// Tokens that nothing reaches any more, and since when: seconds since 1970. The newest few.
    std::map<std::string, double> gone{};
    friend bool operator==(const Registration&, const Registration&) = default;
  };
  struct Contents {
    double clockOffset = 0;                               ///< seconds
    std::map<std::string, Registration> registrations{};  ///< by application
    bool off = false;
    friend bool operator==(const Contents&, const Contents&) = default;
  };

  /// `path` is absolute. The file and its folder are made by the first change.
  explicit DeviceFile(std::string path) : path_(std::move(path)) {}

  /// Nothing at all while there is no file.
  [[nodiscard]] Result<Contents> read() const;
  /// Reads, changes and replaces the file as one step among all processes; what `work` leaves as it was is
  /// not written. A file that can't be read stays.
  Status change(platform::FunctionRef<void(Contents&)> work) const;
  /// Tells a failure on standard error that nobody else will tell; only the first one.
  void report(const Status& status);

 private:
  [[nodiscard]] Status replace(const Contents& contents) const;

  const std::string path_;
  std::mutex mutex_;
  bool reported_ = false;
};

}  // namespace VorselKelp::simulator
