#pragma once

#include <memory>

#include "VorselKelpLinux/ApplicationHost.h"

namespace news {

/// The news application of a publisher: everything goes through the publisher's own entry, BrellixPushSDK.
std::unique_ptr<VorselKelp::linux_platform::ApplicationDelegate> makeFacadeNews();

}  // namespace news
