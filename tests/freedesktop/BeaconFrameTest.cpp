#include "bluez/BeaconFrame.h"

#include <gtest/gtest.h>

#include "freedesktop/BluezServer.h"

namespace VorselKelp::freedesktop {
namespace {

VariantPtr parsed(const char* text) {
  return hold(g_variant_parse(G_VARIANT_TYPE("a{sv}"), text, nullptr, nullptr, nullptr));
}

TEST(BeaconFrameTest, ReadsTheNumbersBigEndian) {
  const std::vector<std::uint8_t> frame{0x02, 0x15, 0xE2, 0xC5, 0x6D, 0xB5, 0xDF, 0xFB,
                                        0x48, 0xD2, 0xB0, 0x60, 0xD0, 0xF5, 0xA7, 0x10,
                                        0x96, 0xE0, 0x12, 0x34, 0xFF, 0xFE, 0xC5};
  const auto beacon = parseBeaconFrame(frame);
  ASSERT_TRUE(beacon);
  EXPECT_EQ(beacon->proximityUUID, "E2C56DB5-DFFB-48D2-B060-D0F5A71096E0");
  EXPECT_EQ(beacon->major, 0x1234);
  EXPECT_EQ(beacon->minor, 0xFFFE);
}

TEST(BeaconFrameTest, RefusesEveryOtherFrame) {
  const auto good = beaconFrame(0x30, 1, 2);
  ASSERT_TRUE(parseBeaconFrame(good));
  for (std::size_t size = 0; size < good.size(); ++size)
    EXPECT_FALSE(parseBeaconFrame(std::span(good).first(size))) << size;
  auto longer = good;
  longer.push_back(0);
  EXPECT_FALSE(parseBeaconFrame(longer));
  for (const std::size_t at : {0, 1}) {
    auto other = good;
    ++other[at];
    EXPECT_FALSE(parseBeaconFrame(other));
  }
}

TEST(BeaconFrameTest, HostilePropertiesAreNoBeacon) {
  EXPECT_TRUE(beaconOf(deviceProperties(beaconFrame(0x30, 1, 2)).get()));
  EXPECT_FALSE(beaconOf(deviceProperties(beaconFrame(0x30, 1, 2), true, 0x0059).get()));
  EXPECT_FALSE(beaconOf(deviceProperties({}).get()));
  for (const auto* text :
       {"{}", "{'ManufacturerData': <'text'>}", "{'ManufacturerData': <@a{qv} {}>}",
        "{'ManufacturerData': <{'76': <[byte 2, 21]>}>}", "{'ManufacturerData': <{uint16 76: <'text'>}>}",
        "{'ManufacturerData': <{uint16 76: <<[byte 2, 21]>>}>}",
        "{'ManufacturerData': <{uint16 76: <[uint16 533, 533]>}>}",
        "{'ManufacturerData': <<{uint16 76: <1>}>>}"}) {
    EXPECT_FALSE(beaconOf(parsed(text).get())) << text;
  }
}

}  // namespace
}  // namespace VorselKelp::freedesktop
