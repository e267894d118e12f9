#include "VorselKelpFreedesktop/BluezLocation.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <optional>

#include "freedesktop/BluezServer.h"
#include "freedesktop/LocationLog.h"

namespace VorselKelp::freedesktop {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* adapter = "org.bluez.Adapter1";
constexpr const char* deviceInterface = "org.bluez.Device1";
constexpr const char* hci0 = "/org/bluez/hci0";
constexpr const char* hci1 = "/org/bluez/hci1";
constexpr const char* dev1 = "/org/bluez/hci0/dev_1";
constexpr const char* dev2 = "/org/bluez/hci0/dev_2";
const platform::Region one{"one", "00000000-0000-0000-0000-000000000330"};
const platform::Region two{"two", "00000000-0000-0000-0000-000000000340"};

class BluezLocationTest : public BusTest {
 protected:
  BluezLocationTest() {
    bluez.emplace(address);
    make(address);
  }
  void make(const std::string& where) {
    location = makeBluezLocation(queue, where);
    manager = location->makeLocationManager();
    manager->setDelegate(log);
    manager->requestAlwaysAuthorization();
  }
  /// Until the adapter looks, `times` times in all.
  void waitForDiscovery(int times = 1) {
    waitUntil([&] {
      const auto starts = [](const auto& line) { return line.find("StartDiscovery") != std::string::npos; };
      return std::count_if(bluez->called.begin(), bluez->called.end(), starts) == times;
    });
  }
  void advertise(std::uint8_t lastOfUUID, std::uint16_t minor) {
    bluez->change(dev1, deviceInterface, deviceProperties(beaconFrame(lastOfUUID, 1, minor)));
  }
  void waitForLines(std::size_t count) {
    waitUntil([&] { return log->lines.size() >= count; });
  }

  std::optional<BluezServer> bluez;
  std::shared_ptr<LocationLog> log = std::make_shared<LocationLog>();
  std::shared_ptr<platform::LocationServices> location;
  std::shared_ptr<platform::LocationManager> manager;
};

TEST_F(BluezLocationTest, LooksWithTheFirstAdapterAndFindsWhatIsInRangeAlready) {
  bluez->placeAdapter(hci1);
  bluez->placeAdapter(hci0);
  bluez->place(dev1, deviceInterface, deviceProperties(beaconFrame(0x30, 1, 2), false));  // only remembered
  bluez->place(dev2, deviceInterface, deviceProperties(beaconFrame(0x40, 1, 2)));
  queue->runUntilIdle();
  EXPECT_TRUE(bluez->client.empty()) << "nobody is looked for yet";
  manager->startMonitoring(one);
  manager->startMonitoring(two);
  waitForDiscovery();
  EXPECT_THAT(
      bluez->called,
      ElementsAre("/org/bluez/hci0 SetDiscoveryFilter ({'Transport': <'le'>, 'DuplicateData': <true>},)",
                  "/org/bluez/hci0 StartDiscovery ()"));
  EXPECT_THAT(log->take(), ElementsAre("enter two"));

  manager.reset();
  advance(1);
  waitForName(bluez->client, false);  // and so the adapter may rest
}

TEST_F(BluezLocationTest, EntersAtTheFirstFrameAndLeavesAfterThirtySilentSeconds) {
  bluez->placeAdapter(hci0);
  manager->startMonitoring(one);
  manager->startMonitoring({"place", std::nullopt});
  waitForDiscovery();
  bluez->add(dev1, deviceInterface, deviceProperties(beaconFrame(0x30, 1, 2)));
  waitForLines(1);
  EXPECT_THAT(log->take(), ElementsAre("enter one"));
  advance(25);
  manager->startMonitoring(two);
  advertise(0x50, 1);  // watched by nobody
  advertise(0x30, 1);
  advertise(0x40, 1);
  waitForLines(1);
  EXPECT_THAT(log->take(), ElementsAre("enter two"));
  bluez->change(dev1, deviceInterface, hold(g_variant_new_parsed("{'RSSI': <int16 -60>}")));
  advance(29);
  clock->setNow(clock->now() + 86400);  // the user sets the date
  advance(1);
  EXPECT_THAT(log->take(), IsEmpty());
  advance(1);
  EXPECT_THAT(log->take(), ElementsAre("exit one", "exit two"));
  advertise(0x30, 1);
  waitForLines(1);
  EXPECT_THAT(log->take(), ElementsAre("enter one"));
}

TEST_F(BluezLocationTest, TellsOnceASecondWhatWasHeardInIt) {
  bluez->placeAdapter(hci0);
  manager->startRangingBeacons(one);
  manager->startMonitoring(two);
  waitForDiscovery();
  advance(1);
  EXPECT_THAT(log->take(), ElementsAre("range one"));
  for (const auto minor : std::vector<std::uint16_t>{7, 8, 7}) advertise(0x30, minor);
  advertise(0x40, 1);
  waitForLines(1);
  manager->startRangingBeacons(one);  // again, as after "inside": nothing is forgotten
  advance(2);
  EXPECT_THAT(log->take(), ElementsAre("enter two", "range one 1.7 1.8", "range one"));
  log.reset();
  advertise(0x40, 1);
  advance(1);  // nobody listens any more
}

TEST_F(BluezLocationTest, DeterminesTheStateWhenItIsKnown) {
  bluez->placeAdapter(hci0);
  for (const auto& region : {one, two}) {
    manager->startMonitoring(region);
    manager->requestState(region);
  }
  manager->requestState({"place", std::nullopt});
  EXPECT_THAT(log->take(), IsEmpty()) << "answered inside the call";
  waitForDiscovery();
  advertise(0x30, 1);
  waitForLines(2);
  EXPECT_THAT(log->take(), ElementsAre("unknown place", "inside one")) << "it was there, and did not come";
  // The reply that the adapter looks travels in front of this one.
  advertise(0x30, 2);
  manager->requestState(one);
  waitForLines(1);
  advance(4);
  EXPECT_THAT(log->take(), ElementsAre("inside one"));
  advance(1);
  EXPECT_THAT(log->take(), ElementsAre("outside two"));
  advertise(0x40, 1);
  waitForLines(1);
  EXPECT_THAT(log->take(), ElementsAre("enter two"));
  advance(31);
  EXPECT_THAT(log->take(), ElementsAre("exit one", "exit two"));
}

TEST_F(BluezLocationTest, BeginsAgainWhenTheAdapterOrTheServiceComesBack) {
  testing::internal::CaptureStderr();
  manager->startMonitoring(one);
  manager->requestState(one);
  waitUntil([&] { return !bluez->client.empty(); });
  advance(5);
  EXPECT_THAT(log->take(), ElementsAre("unknown one"));
  bluez->refusal = "org.bluez.Error.NotReady";
  bluez->placeAdapter(hci0);
  bluez->add(hci0, adapter, hold(g_variant_new_parsed("@a{sv} {}")));
  waitForDiscovery(1);
  bluez->refusal = "org.bluez.Error.InProgress";
  bluez->change(hci0, adapter, hold(g_variant_new_parsed("{'Powered': <true>}")));
  waitForDiscovery(2);
  bluez->placeAdapter(hci1);
  bluez->remove(hci0, adapter);
  waitForDiscovery(3);
  EXPECT_EQ(bluez->called.back(), "/org/bluez/hci1 StartDiscovery ()");
  advertise(0x30, 1);
  waitForLines(1);
  bluez.reset();
  bluez.emplace(address);
  bluez->placeAdapter(hci0);
  waitForDiscovery(1);
  manager->startMonitoring(two);
  advertise(0x40, 1);
  waitForLines(2);
  EXPECT_THAT(log->take(), ElementsAre("enter one", "enter two"));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "No beacon can be found: there is no Bluetooth adapter\n"
            "No beacon can be found: org.bluez.Error.NotReady: refused\n");
}

TEST_F(BluezLocationTest, HostileSignalsAreSurvived) {
  bluez->placeAdapter(hci0);
  manager->startMonitoring(one);
  waitForDiscovery();
  constexpr const char* properties = "org.freedesktop.DBus.Properties";
  constexpr const char* objects = "org.freedesktop.DBus.ObjectManager";
  bluez->emit(dev1, properties, "PropertiesChanged", g_variant_new("(s)", deviceInterface));
  bluez->emit(dev1, properties, "PropertiesChanged",
              g_variant_new_parsed("(%s, 7, 'text')", deviceInterface));
  bluez->emit(hci0, properties, "PropertiesChanged",
              g_variant_new_parsed("(%s, {'Powered': <'yes'>}, @as [])", adapter));
  bluez->emit("/", objects, "InterfacesAdded",
              g_variant_new_parsed("('/no', {%s: 'text'})", deviceInterface));
  bluez->emit("/", objects, "InterfacesRemoved", nullptr);
  bluez->change(dev1, deviceInterface, deviceProperties({}));
  bluez->change(dev1, deviceInterface, deviceProperties(std::vector<std::uint8_t>(100'000, 2)));
  advertise(0x30, 1);
  waitForLines(1);
  EXPECT_THAT(log->take(), ElementsAre("enter one"));
}

TEST_F(BluezLocationTest, WithoutABusNothingIsFound) {
  make("unix:path=/nonexistent/bus");
  testing::internal::CaptureStderr();
  manager->startMonitoring(one);
  manager->startRangingBeacons(one);
  manager->requestState(one);
  waitUntil([] {
    struct stat captured {};
    return fstat(STDERR_FILENO, &captured) == 0 && captured.st_size > 0;
  });
  advance(5);
  const auto complaint = testing::internal::GetCapturedStderr();
  EXPECT_THAT(complaint, HasSubstr("No beacon can be found: Could not connect"));
  EXPECT_EQ(std::count(complaint.begin(), complaint.end(), '\n'), 1);
  EXPECT_EQ(log->lines.back(), "unknown one");
}

}  // namespace
}  // namespace VorselKelp::freedesktop
