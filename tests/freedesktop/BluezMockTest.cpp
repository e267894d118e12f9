#include <gmock/gmock.h>

#include "VorselKelpFreedesktop/BluezLocation.h"
#include "bus/Connection.h"
#include "freedesktop/BluezServer.h"
#include "freedesktop/LocationLog.h"

namespace VorselKelp::freedesktop {
namespace {

// The system's own: packages of the distribution are installed for no other.
constexpr const char* python = "/usr/bin/python3";
constexpr const char* mockInterface = "org.bluez.Mock";

/// The Bluetooth service as the dbusmock project pictures it, in a process of its own.
class BluezMockTest : public BusTest {
 protected:
  void SetUp() override {
    const char* const probe[] = {python, "-c", "import dbusmock", nullptr};
    int status = 1;
    const bool ran = g_spawn_sync(nullptr, const_cast<char**>(probe), nullptr, G_SPAWN_STDERR_TO_DEV_NULL,
                                  nullptr, nullptr, nullptr, nullptr, &status, nullptr);
    if (!ran || status != 0) GTEST_SKIP() << "python3 has no dbusmock (package python3-dbusmock)";
    const ObjectPtr<GSubprocessLauncher> launcher(
        g_subprocess_launcher_new(G_SUBPROCESS_FLAGS_STDOUT_SILENCE));
    g_subprocess_launcher_setenv(launcher.get(), "DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), TRUE);
    mock.reset(g_subprocess_launcher_spawn(launcher.get(), nullptr, python, "-m", "dbusmock", "--system",
                                           "--template", "bluez5", nullptr));
    ASSERT_TRUE(mock);
    waitForName("org.bluez", true);
  }
  void TearDown() override {
    if (!mock) return;
    g_subprocess_force_exit(mock.get());
    g_subprocess_wait(mock.get(), nullptr, nullptr);
  }

  VariantPtr ask(const char* path, const char* interface, const char* method, const char* answer,
                 GVariant* arguments) {
    VariantPtr value;
    bool done = false;
    test->call({"org.bluez", path, interface, method, answer}, hold(arguments),
               [&](Result<VariantPtr> reply) {
                 done = true;
                 EXPECT_TRUE(reply) << reply.error().description;
                 if (reply) value = *std::move(reply);
               });
    waitUntil([&] { return done; });
    return value;
  }

  ObjectPtr<GSubprocess> mock;
  std::shared_ptr<Connection> test;
};

TEST_F(BluezMockTest, FindsABeacon) {
  bool discovering = false;
  test = std::make_shared<Connection>(BusKind::system, address, queue);
  test->listen({"org.bluez", "org.freedesktop.DBus.Properties", "PropertiesChanged", "/org/bluez/hci0",
                nullptr, "(sa{sv}as)"},
               [&](const std::string&, GVariant* arguments) {
                 const VariantPtr properties(g_variant_get_child_value(arguments, 1));
                 gboolean now = FALSE;
                 discovering =
                     g_variant_lookup(properties.get(), "Discovering", "b", &now) ? now : discovering;
               });
  ask("/org/bluez", mockInterface, "AddAdapter", "(s)", g_variant_new("(ss)", "hci0", "test"));
  const char* device = "/org/bluez/hci0/dev_11_22_33_44_55_66";
  ask("/org/bluez", mockInterface, "AddDevice", "(s)",
      g_variant_new("(sss)", "hci0", "11:22:33:44:55:66", "beacon"));

  const auto log = std::make_shared<LocationLog>();
  const auto manager = makeBluezLocation(queue, address)->makeLocationManager();
  manager->setDelegate(log);
  manager->startMonitoring({"one", "00000000-0000-0000-0000-000000000330"});
  waitUntil([&] { return discovering; });

  const auto properties = deviceProperties(beaconFrame(0x30, 1, 2));
  const auto arguments =
      g_variant_new_parsed("[<'org.bluez.Device1'>, <%@a{sv}>, <@as []>]", properties.get());
  ask(device, "org.freedesktop.DBus.Mock", "EmitSignal", "()",
      g_variant_new("(sss@av)", "org.freedesktop.DBus.Properties", "PropertiesChanged", "sa{sv}as",
                    arguments));
  waitUntil([&] { return !log->lines.empty(); });
  EXPECT_THAT(log->lines, testing::ElementsAre("enter one"));
}

}  // namespace
}  // namespace VorselKelp::freedesktop
