#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Console.h"
#include "VorselKelp/platform/Device.h"
#include "VorselKelp/platform/InAppBrowser.h"
#include "VorselKelp/platform/Random.h"
#include "VorselKelpTesting/MemoryApplication.h"

namespace VorselKelp::testing_platform {

/// A device whose values can be set at any time. Thread-safe.
class VORSELKELP_API SettableDevice final : public platform::Device {
 public:
  struct Values {
    std::string machineIdentifier = "iPhone13,2";
    std::string systemVersion = "17.4";
    std::string systemName = "iOS";
    std::string systemFamily = "iOS";
    std::string manufacturer = "Apple";
    std::optional<std::string> productName;
    std::string languageCode = "en";
    int secondsFromGMT = 3600;
    ui::DeviceOrientation orientation = ui::DeviceOrientation::portrait;
    std::map<std::string, std::string> environment;
  };

  void set(Values values);
  [[nodiscard]] Values values() const;
  std::string machineIdentifier() override { return values().machineIdentifier; }
  std::optional<std::string> environmentVariable(const std::string& name) override;
  std::string systemVersion() override { return values().systemVersion; }
  std::string systemName() override { return values().systemName; }
  std::string systemFamily() override { return values().systemFamily; }
  std::string manufacturer() override { return values().manufacturer; }
  std::optional<std::string> productName() override { return values().productName; }
  std::string languageCode() override { return values().languageCode; }
  int secondsFromGMT() override { return values().secondsFromGMT; }
  ui::DeviceOrientation orientation() override { return values().orientation; }

 private:
  mutable std::mutex mutex_;
  Values values_;
};

/// A screen of any size, in points; 390 × 844 until set. Thread-safe. It is refreshed when the test says so.
class VORSELKELP_API SettableScreen final : public platform::Screen {
 public:
  void set(double width, double height);
  double width() override;
  double height() override;
  std::unique_ptr<platform::DisplayLink> makeDisplayLink(std::function<void(double)> tick) override;

  /// Every link that is not paused ticks, with this time in seconds. Main thread.
  void refresh(double seconds);
  /// How many links are running.
  [[nodiscard]] std::size_t runningLinks();

 private:
  class Link;
  std::mutex mutex_;
  std::shared_ptr<std::vector<Link*>> links_ = std::make_shared<std::vector<Link*>>();
  double width_ = 390;
  double height_ = 844;
};

/// The same numbers in every run that starts with the same seed. Thread-safe.
class VORSELKELP_API DeterministicRandom final : public platform::Random {
 public:
  explicit DeterministicRandom(std::uint64_t seed = 1) : state_(seed) {}
  std::uint32_t below(std::uint32_t bound) override;

 private:
  std::mutex mutex_;
  std::uint64_t state_;
};

/// Keeps every text, word for word. Thread-safe.
class VORSELKELP_API RecordingConsole final : public platform::Console {
 public:
  void print(std::string_view text) override;
  [[nodiscard]] std::vector<std::string> texts() const;
  /// How often exactly this text was written.
  [[nodiscard]] std::size_t count(std::string_view text) const;
  void clear();

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> texts_;
};

/// Keeps the address of every page that it was to show. Thread-safe.
class VORSELKELP_API RecordingBrowser final : public platform::InAppBrowser {
 public:
  /// `application`, which may be null, tells its screen observers of each page.
  explicit RecordingBrowser(std::shared_ptr<MemoryApplication> application = nullptr)
      : application_(std::move(application)) {}
  void present(const std::string& url) override;
  [[nodiscard]] std::vector<std::string> pages() const;

 private:
  const std::shared_ptr<MemoryApplication> application_;
  mutable std::mutex mutex_;
  std::vector<std::string> pages_;
};

}  // namespace VorselKelp::testing_platform
