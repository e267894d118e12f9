#pragma once

#include "VorselKelp/ui/WebView.h"

namespace VorselKelp {

/// Takes what the permission page writes to its console, and keeps it out of the application's log.
class LoggingMessageHandler final : public ui::ScriptMessageHandler {
 public:
  void didReceive(const std::string&, const JSONAny&) override {}
};

}  // namespace VorselKelp
