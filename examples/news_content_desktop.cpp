// The same extension in a window.

#include "NewsContent.h"
#include "VorselKelpDesktop/DesktopScreen.h"

int main(int argc, char** argv) {
  news::NewsContent content;
  return VorselKelp::linux_platform::runContentExtension(argc, argv, content,
                                                         *VorselKelp::desktop::makeDesktopScreen());
}
