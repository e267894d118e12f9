#pragma once

#include <memory>
#include <string>
#include <vector>

#include "VorselKelp/VorselConfig.h"
#include "VorselKelp/platform/Platform.h"
#include "core/CoreContext.h"

namespace VorselKelp::benchmarks {

/// A new empty folder, removed with all that is in it.
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();
  const std::string path;
};

/// A platform with the real store and real files below `folder`; requests are dropped unsent, the console is
/// silent and the notification centre always has the same `categories` registered.
[[nodiscard]] std::shared_ptr<platform::Platform> benchmarkPlatform(
    const std::string& folder, std::vector<platform::NotificationCategory> categories = {});

/// Drops a platform's requests unsent, silences its console, and fixes its registered categories.
void makeQuiet(platform::Platform& services, std::vector<platform::NotificationCategory> categories = {});

inline constexpr const char* benchmarkGroup = "group.com.example.news";

/// The configuration of one core of several: push on.
[[nodiscard]] std::shared_ptr<VorselConfig> configured(const std::shared_ptr<CoreContext>& core,
                                                       const char* group = benchmarkGroup);

/// A text-only push of 2.2 KB: title, body, two buttons, open target, trackers.
[[nodiscard]] std::string textPush();

/// One of the same size without trackers, so that no request leaves the process. `image`: its picture's
/// address.
[[nodiscard]] std::string quietPush(const std::string& image = {});

}  // namespace VorselKelp::benchmarks
