// The Reader without pushes.

#include "ReaderWindow.h"

int main(int argc, char** argv) {
  ReaderWindow window;
  g_autoptr(GtkApplication) application =
      gtk_application_new("com.example.reader", G_APPLICATION_DEFAULT_FLAGS);
  g_signal_connect(application, "activate", G_CALLBACK(+[](GtkApplication* app, gpointer reader) {
                     static_cast<ReaderWindow*>(reader)->show(app);
                   }),
                   &window);
  return g_application_run(G_APPLICATION(application), argc, argv);
}
