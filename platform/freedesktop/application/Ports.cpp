#include "application/Ports.h"

#include "VorselKelpFreedesktop/UrlOpener.h"
#include "VorselKelpPosix/LineSink.h"

namespace VorselKelp::freedesktop {

void DesktopUrlOpener::open(const std::string& url) {
  openUrl(url, mainQueue_, [](const Status& status) {
    if (!status) posix::standardErrorLines()(status.error().description);
  });
}

void NoAgent::begin() {
  posix::standardErrorLines()(
      "Remote notifications are not available: there is no push agent on this machine");
}

}  // namespace VorselKelp::freedesktop
