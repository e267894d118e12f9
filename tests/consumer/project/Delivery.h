#pragma once

#include <cstdio>
#include <memory>

#include "VorselKelpSimulator/Runtime.h"
#include "VorselKelpTesting/MemoryPlatform.h"

namespace delivery {

namespace platform = VorselKelp::platform;
namespace simulator = VorselKelp::simulator;
using VorselKelp::testing_platform::MemoryDevice;
using VorselKelp::testing_platform::MemoryPlatform;

inline constexpr const char* group = "group.com.example.reader";

/// A push as it reaches the service extension.
inline platform::NotificationRequest request() {
  platform::NotificationRequest request;
  request.identifier = "storm";
  request.content.userInfo = platform::UserInfo::fromJSON(
      R"({"aps": {"mutable-content": 1, "alert": {"title": "Storm over the bay",
          "v": "http://news.example/track/view",
          "n": {"body": "Gusts", "data": {"url": "reader://storm"}}}}})");
  return request;
}

/// A device that knows the application's group, and a server that answers whatever it is asked.
inline std::shared_ptr<MemoryDevice> makeDevice() {
  auto device = std::make_shared<MemoryDevice>();
  device->addGroup(group);
  return device;
}

inline void settle(MemoryPlatform& process) {
  process.urlSession->setRule("*", {200, "{}", {}, {}, {}});
  process.settle();
}

inline void reportPrepared(const platform::NotificationContent& content) {
  std::printf("prepared: %s\n", content.title.c_str());
}

/// What the service extension's process asked of the network, and what it finds of the library's pictures.
inline void report(const MemoryPlatform& extension) {
  for (const auto& url : extension.urlSession->urls()) std::printf("requested: %s\n", url.c_str());
  const auto bundle = simulator::makeBundleInformation({}, simulator::ProcessKind::application);
  int pictures = 0;
  for (const char* name : {"left2.png", "right2.png"}) pictures += bundle->libraryResource(name) ? 1 : 0;
  std::printf("pictures: %d\n", pictures);
}

}  // namespace delivery
