#pragma once

#include <memory>
#include <string>

#include "VorselKelp/platform/ImageDecoder.h"
#include "VorselKelp/platform/MainQueue.h"

namespace VorselKelp::freedesktop {

/// Makes of a picture's file what the portal takes as an icon: a square PNG of at most 512 pixels a side.
/// Works on a thread of GLib's; `answer` comes once on the main queue, with the bytes, empty when there is
/// none to be made. Main thread.
void makePortalIcon(std::string file, std::shared_ptr<platform::ImageDecoder> decoder,
                    std::shared_ptr<platform::MainQueue> mainQueue,
                    platform::UniqueFunction<void(std::string png)> answer);

}  // namespace VorselKelp::freedesktop
