#include <cstdlib>
#include <ctime>

#include "VorselKelpSimulator/Runtime.h"

namespace VorselKelp::simulator {
namespace {

/// "de_DE.UTF-8" is German; the locales without a language ("C", "POSIX") count as English.
std::string languageOf(std::string_view locale) {
  const auto language = locale.substr(0, locale.find_first_of("_.@"));
  if (language.empty() || language == "C" || language == "POSIX") return "en";
  return std::string(language);
}

class ManifestDevice final : public platform::Device {
 public:
  explicit ManifestDevice(const Manifest& manifest)
      : machine_(manifest.machine),
        systemVersion_(manifest.systemVersion),
        orientation_(manifest.screenWidth > manifest.screenHeight ? ui::DeviceOrientation::landscapeLeft
                                                                  : ui::DeviceOrientation::portrait) {}

  std::string machineIdentifier() override { return machine_; }
  std::optional<std::string> environmentVariable(const std::string& name) override {
    const char* value = std::getenv(name.c_str());
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
  }
  std::string systemVersion() override { return systemVersion_; }
  std::string systemName() override { return "iOS"; }

  std::string languageCode() override {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
      const char* locale = std::getenv(name);
      if (locale != nullptr && *locale != '\0') return languageOf(locale);
    }
    return "en";
  }

  ui::DeviceOrientation orientation() override { return orientation_; }

  int secondsFromGMT() override {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    if (::localtime_r(&now, &local) == nullptr) return 0;
    return static_cast<int>(local.tm_gmtoff);
  }

 private:
  std::string machine_;
  std::string systemVersion_;
  ui::DeviceOrientation orientation_;
};

/// Nothing is drawn, so nothing is refreshed.
class SilentLink final : public platform::DisplayLink {
 public:
  void setPaused(bool) override {}
};

class ManifestScreen final : public platform::Screen {
 public:
  explicit ManifestScreen(const Manifest& manifest)
      : width_(manifest.screenWidth), height_(manifest.screenHeight) {}
  double width() override { return width_; }
  double height() override { return height_; }
  std::unique_ptr<platform::DisplayLink> makeDisplayLink(std::function<void(double)>) override {
    return std::make_unique<SilentLink>();
  }

 private:
  double width_;
  double height_;
};

}  // namespace

std::shared_ptr<platform::Device> makeDevice(const Manifest& manifest) {
  return std::make_shared<ManifestDevice>(manifest);
}

std::shared_ptr<platform::Screen> makeScreen(const Manifest& manifest) {
  return std::make_shared<ManifestScreen>(manifest);
}

}  // namespace VorselKelp::simulator
