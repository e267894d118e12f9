// Built, not run: the desktop platform links with what its package names.

#include "VorselKelpDesktop/DesktopScreen.h"

int main() {
  return VorselKelp::desktop::makeDesktopScreen() != nullptr ? 0 : 1;
}
