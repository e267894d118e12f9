// The news application in a window.

#include "FrontPage.h"
#include "NewsApplication.h"
#include "VorselKelpSimulatorScreen/WindowScreen.h"

int main(int argc, char** argv) {
  news::NewsApplication application;
  return VorselKelp::simulator::runApplication(argc, argv, application, news::newsOperations(),
                                               *VorselKelp::simulator::makeWindowScreen());
}
