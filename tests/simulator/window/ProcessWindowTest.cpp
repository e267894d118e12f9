#include "window/ProcessWindow.h"

#include "gtk/support/ScreenTest.h"

namespace VorselKelp::simulator {
namespace {

TEST(ProcessWindowTest, StaysAfterTheUserHasClosedIt) {
  const gtk::TestScreen toolkit;
  ProcessWindow window("test", gtk::TestScreen::width, gtk::TestScreen::height);
  bool left = false;
  window.whenLeft([&] { left = true; });
  window.show(std::make_shared<ui::ViewController>(), [](bool) {});
  gtk::TestScreen::waitUntil([&] { return window.mapped() && window.settled(); });
  EXPECT_TRUE(window.writePicture(testing::TempDir() + "vorsel-window.png").ok());
  auto* toplevels = gtk_window_get_toplevels();
  g_autoptr(GtkWindow) open =
      GTK_WINDOW(g_list_model_get_item(toplevels, g_list_model_get_n_items(toplevels) - 1));
  gtk_window_close(open);
  gtk::TestScreen::waitUntil([&] { return left; });
  EXPECT_FALSE(window.mapped());
  EXPECT_FALSE(window.writePicture("/nowhere/picture.png").ok());
}

}  // namespace
}  // namespace VorselKelp::simulator
