#pragma once

#include <memory>
#include <string>

#include "VorselKelp/VorselKellp.h"
#include "VorselKelpTesting/MemoryPlatform.h"

namespace fuzz {

namespace memory = VorselKelp::testing_platform;

inline constexpr const char* group = "group.example";

/// A device with one application group.
inline std::shared_ptr<memory::MemoryDevice> makeDevice() {
  auto device = std::make_shared<memory::MemoryDevice>();
  device->addGroup(group);
  return device;
}

/// The store that the processes share.
inline memory::MemoryDefaultsDomain& storeOf(const memory::MemoryDevice& device) {
  return *device.groupStores->find(group);
}

/// One process of the application with the library installed in it, for as long as this object lives.
class Process {
 public:
  explicit Process(const std::shared_ptr<memory::MemoryDevice>& device,
                   memory::ProcessKind kind = memory::ProcessKind::application,
                   const std::string& bundle = memory::MemoryPlatform::defaultBundleIdentifier)
      : platform(device, kind, bundle) {
    VorselKelp::VorselKellp::install(platform.platform());
    VorselKelp::VorselKellp::setValueFor(group);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process() {
    // What is on the screen holds the core, whose platform holds the screen.
    platform.presenter->setRootViewController(nullptr);
    VorselKelp::VorselKellp::uninstall();
  }

  memory::MemoryPlatform platform;
};

/// A server's answer to a request for a picture: a picture, something else, or a failure.
inline memory::ServerAnswer pictureAnswer(unsigned choice) {
  memory::ServerAnswer answer;
  switch (choice % 6) {
    case 0:
      answer.body = memory::pngBeginning(8, 4);
      break;
    case 1:
      answer.body = memory::gifBeginning(3, 5);
      answer.suggestedFilename = "../a b.gif";
      break;
    case 2:
      answer.body = "<html>";
      break;
    case 3:
      answer.status = 404;
      answer.body = memory::jpegBeginning(2, 2);
      break;
    case 4:
      answer.status = 204;
      break;
    default:
      answer = memory::ServerAnswer::failure("down");
  }
  return answer;
}

}  // namespace fuzz
