// Built, not run: the desktop platform links with what its package names.

#include "VorselKelpSimulatorScreen/WindowScreen.h"

int main() {
  return VorselKelp::simulator::makeWindowScreen() != nullptr ? 0 : 1;
}
