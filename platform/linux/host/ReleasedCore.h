#pragma once

#include <memory>

#include "VorselKelp/platform/Platform.h"

namespace VorselKelp::linux_platform {

/// The process ends: the library lets go of `platform`, so that its stores are closed in good order and their
/// logs do not grow from process to process. What the library is still asked for afterwards finds no store
/// and sends nothing.
void releaseCore(std::shared_ptr<platform::Platform> platform);

}  // namespace VorselKelp::linux_platform
