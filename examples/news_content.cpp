// The news application's notification-content extension: the area below a notification in which the library
// shows its carousel.

#include "NewsContent.h"

int main(int argc, char** argv) {
  news::NewsContent content;
  return VorselKelp::simulator::runContentExtension(argc, argv, content);
}
