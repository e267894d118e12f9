// The news application without a window.

#include "NewsApplication.h"
#include "VorselKelpLinux/OperationTable.h"

int main(int argc, char** argv) {
  news::NewsApplication application;
  return VorselKelp::linux_platform::runApplication(argc, argv, application,
                                                    VorselKelp::linux_platform::publicOperations());
}
