#include "application/Ports.h"

#include "VorselKelpFreedesktop/UrlOpener.h"
#include "VorselKelpPosix/LineSink.h"

namespace VorselKelp::freedesktop {

void DesktopUrlOpener::open(const std::string& url) {
  openUrl(url, mainQueue_, [](const Status& status) {
    if (!status) posix::standardErrorLines()(status.error().description);
  });
}

}  // namespace VorselKelp::freedesktop
