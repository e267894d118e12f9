#include <cstdlib>

#include "VorselKelpPosix/Locale.h"
#include "VorselKelpSystem/Process.h"

namespace VorselKelp::system {
namespace {

class MachineDevice final : public platform::Device {
 public:
  explicit MachineDevice(Machine machine) : machine_(std::move(machine)) {}

  std::string machineIdentifier() override { return machine_.identifier; }
  std::optional<std::string> environmentVariable(const std::string& name) override {
    const char* value = std::getenv(name.c_str());
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
  }
  std::string systemVersion() override { return machine_.systemVersion; }
  std::string systemName() override { return machine_.systemName; }
  std::string systemFamily() override { return machine_.systemFamily; }
  std::string manufacturer() override { return machine_.manufacturer; }
  std::optional<std::string> productName() override { return machine_.productName; }

  std::string languageCode() override { return posix::userLanguage(); }
  ui::DeviceOrientation orientation() override {
    return machine_.screenWidth > machine_.screenHeight ? ui::DeviceOrientation::landscapeLeft
                                                        : ui::DeviceOrientation::portrait;
  }

  int secondsFromGMT() override { return posix::secondsFromGMT(); }

 private:
  const Machine machine_;
};

/// Nothing is drawn, so nothing is refreshed.
class SilentLink final : public platform::DisplayLink {
 public:
  void setPaused(bool) override {}
};

class MachineScreen final : public platform::Screen {
 public:
  MachineScreen(double width, double height) : width_(width), height_(height) {}
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

std::shared_ptr<platform::Device> makeDevice(const Machine& machine) {
  return std::make_shared<MachineDevice>(machine);
}

std::shared_ptr<platform::Screen> makeScreen(const Machine& machine) {
  return std::make_shared<MachineScreen>(machine.screenWidth, machine.screenHeight);
}

}  // namespace VorselKelp::system
