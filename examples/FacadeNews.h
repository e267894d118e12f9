#pragma once

#include <memory>

#include "VorselKelpSimulator/ApplicationHost.h"

namespace news {

/// The news application of a publisher: everything goes through the publisher's own entry, BrellixPushSDK.
std::unique_ptr<VorselKelp::simulator::ApplicationDelegate> makeFacadeNews();

}  // namespace news
