#pragma once

#include "BrellixPush/BrellixPushSDK.h"
#include "kellp/KellpTest.h"

namespace BrellixPush {

/// The facade as a publisher's application meets it.
class FacadeTest : public VorselKelp::KellpTest {
 protected:
  void startFacade() {
    BrellixPushSDK::initialize(BrellixPushSDKBuilder("key", group).push().build());
    app_.urlSession->setRule("/tag/key.json", VorselKelp::status(200, "{}"));
    app_.settle();
  }
};

}  // namespace BrellixPush
