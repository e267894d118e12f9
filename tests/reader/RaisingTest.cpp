// The Reader's window among others, where a window manager says who comes to the front.

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <stdlib.h>

#include "freedesktop/NotificationServer.h"
#include "reader/Desk.h"

namespace VorselKelp::testing_support {
namespace {

/// A window over the whole display, of another program.
class Cover {
 public:
  Cover() {
    ::XStoreName(display_, window_, "Cover");
    ::XSelectInput(display_, window_, PropertyChangeMask);
    ::XMapRaised(display_, window_);
    ::XFlush(display_);
  }
  Cover(const Cover&) = delete;
  Cover& operator=(const Cover&) = delete;
  ~Cover() { ::XCloseDisplay(display_); }

  /// The display's time, in milliseconds.
  Time now() {
    ::XChangeProperty(display_, window_, atom("NOW"), XA_STRING, 8, PropModeAppend, nullptr, 0);
    XEvent event;
    ::XWindowEvent(display_, window_, PropertyChangeMask, &event);
    return event.xproperty.time;
  }
  [[nodiscard]] static bool coversAll() { return pixels(color) > 600'000; }
  /// When the user was last at work in a window, as its program says.
  unsigned long lastUse(Window other) {
    // Where the window manager does not know of the former, programs use the window itself.
    const auto own = number(other, "_NET_WM_USER_TIME_WINDOW", XA_WINDOW);
    return std::max(own == 0 ? 0 : number(own, "_NET_WM_USER_TIME", XA_CARDINAL),
                    number(other, "_NET_WM_USER_TIME", XA_CARDINAL));
  }

 private:
  static constexpr unsigned long color = 0x205080;

  unsigned long number(Window other, const char* name, Atom type) {
    Atom found = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* value = nullptr;
    ::XGetWindowProperty(display_, other, atom(name), 0, 1, False, type, &found, &format, &count, &left,
                         &value);
    const auto result = count > 0 ? *reinterpret_cast<unsigned long*>(value) : 0;
    ::XFree(value);
    return result;
  }
  Atom atom(const char* name) { return ::XInternAtom(display_, name, False); }

  Display* const display_ = ::XOpenDisplay(nullptr);
  const Window window_ =
      ::XCreateSimpleWindow(display_, DefaultRootWindow(display_), 0, 0, 800, 900, 0, 0, color);
};

class RaisingTest : public Desk {
 protected:
  RaisingTest() {
    const platform::NotificationAction drop{"drop", "Drop", platform::NotificationActionOption::destructive};
    store_->changeCategories({}, {{"c", {drop}, false}});
    for (const char* identifier : {"dropped", "read", "by the agent"}) {
      platform::NotificationRequest request;
      request.identifier = identifier;
      request.content.title = identifier;
      request.content.categoryIdentifier = "c";
      EXPECT_TRUE(store_->schedule(request));
    }
  }

  /// Has the user choose an action of a notification by its label, as a desktop does that lets the
  /// application's window come to the front, and waits until the Reader has heard it.
  void tap(const std::string& title, const char* label, Time time) {
    const auto shown = std::ranges::find(server.shown, title, &freedesktop::NotificationServer::Shown::title);
    ASSERT_NE(shown, server.shown.end());
    const auto action = std::ranges::find(shown->actions, label);
    ASSERT_NE(action, shown->actions.end());
    server.emit("ActivationToken", g_variant_new("(us)", shown->number, token(time).c_str()));
    const auto before = store_->delivered().size();
    server.invoke(shown->number, *(action - 1));
    waitFor([&] { return store_->delivered().size() < before; });
  }
  static std::string token(Time time) { return "desk-1_TIME" + std::to_string(time); }
  static std::string active() { return output("xdotool getactivewindow getwindowname"); }
  /// Somebody works in the other window.
  static void work() {
    ASSERT_TRUE(waitFor([&] {
      output("xdotool mousemove 780 880 click 1");
      return Cover::coversAll() && active() == "Cover";
    }));
  }

  freedesktop::NotificationServer server{::getenv("DBUS_SESSION_BUS_ADDRESS")};
};

TEST_F(RaisingTest, ATapBringsTheWindowToTheFrontUnlessItsButtonIsDestructive) {
  const Program openbox("openbox --sm-disable");
  startReader();
  ASSERT_TRUE(waitFor([&] { return server.shown.size() == 3; }));
  ASSERT_TRUE(waitFor([] { return active() == "Reader"; }));
  const auto readers = std::stoul(window("^Reader$"));
  Cover cover;
  work();
  tap("dropped", "Drop", cover.now());
  EXPECT_TRUE(Cover::coversAll());
  const auto time = cover.now();
  tap("read", "Open", time);
  EXPECT_TRUE(waitFor([&] { return !Cover::coversAll(); }));
  EXPECT_EQ(active(), "Reader");
  EXPECT_EQ(cover.lastUse(readers), time) << "by which others decide who comes to the front";

  work();
  output(
      "gdbus call --session --dest com.example.reader --object-path /com/example/reader --method "
      "org.freedesktop.Application.ActivateAction vorselkelp-response \"[<('by the agent', '')>]\" "
      "\"{'desktop-startup-id': <'" +
      token(cover.now()) + "'>}\"");
  EXPECT_TRUE(waitFor([&] { return !Cover::coversAll(); }));
}

}  // namespace
}  // namespace VorselKelp::testing_support
