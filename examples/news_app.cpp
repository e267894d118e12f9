// The news application without a window.

#include "FrontPage.h"
#include "NewsApplication.h"

int main(int argc, char** argv) {
  news::NewsApplication application;
  return VorselKelp::simulator::runApplication(argc, argv, application, news::newsOperations());
}
