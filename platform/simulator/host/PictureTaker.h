#pragma once

#include <memory>
#include <string>

#include "VorselKelpPosix/LineSink.h"
#include "VorselKelpSimulator/ProcessScreen.h"
#include "VorselKelpSystem/EventChannel.h"

namespace VorselKelp::simulator {

/// Takes pictures of a process's screen into a folder, and tells of each.
struct PictureTaker {
  ProcessScreen& screen;
  std::shared_ptr<system::EventChannel> channel;
  std::string folder;

  void take(const std::string& name) const {
    if (!screen.visible()) return;
    const auto path = folder + "/" + name + ".png";
    if (const auto written = screen.writePicture(path); !written) {
      return posix::standardErrorLines()(written.error().description);
    }
    channel->send("picture", JSONAny::Dictionary{{"name", name}, {"file", path}});
  }
};

}  // namespace VorselKelp::simulator
