// The same extension in a window.

#include "NewsContent.h"
#include "VorselKelpSimulatorScreen/WindowScreen.h"

int main(int argc, char** argv) {
  news::NewsContent content;
  return VorselKelp::simulator::runContentExtension(argc, argv, content,
                                                    *VorselKelp::simulator::makeWindowScreen());
}
