#pragma once

#include <string>

#include "VorselKelp/JSONAny.h"
#include "VorselKelp/platform/URLSession.h"

namespace brellixctl {

/// What a push service said of a message.
struct PushServiceAnswer {
  VorselKelp::JSONAny::Dictionary json;
  std::string words;    ///< a line for a person; empty when there is a failure
  std::string failure;  ///< why it did not take the message; one line
};

PushServiceAnswer interpret(const VorselKelp::platform::URLResult& result);

}  // namespace brellixctl
