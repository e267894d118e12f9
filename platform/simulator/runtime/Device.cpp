#include <cstdlib>

#include "VorselKelpPosix/Locale.h"
#include "VorselKelpSimulator/Runtime.h"

namespace VorselKelp::simulator {
namespace {

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
  std::string systemFamily() override { return "iOS"; }
  std::string manufacturer() override { return "Apple"; }
  std::optional<std::string> productName() override { return std::nullopt; }

  std::string languageCode() override { return posix::userLanguage(); }
  ui::DeviceOrientation orientation() override { return orientation_; }

  int secondsFromGMT() override { return posix::secondsFromGMT(); }

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
