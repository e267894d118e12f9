#include "core/Device.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string>

#include "VorselKelpTesting/SmallServices.h"

namespace VorselKelp {
namespace {

// Display name, "=", its machine identifiers; models are separated by semicolons or line ends.
constexpr const char* knownModels = R"(
simulator/sandbox=i386 x86_64; iPod 1=iPod1,1; iPod 2=iPod2,1; iPod 3=iPod3,1; iPod 4=iPod4,1
iPod 5=iPod5,1; iPad 2=iPad2,1 iPad2,2 iPad2,3 iPad2,4; iPad 3=iPad3,1 iPad3,2 iPad3,3
iPad 4=iPad3,4 iPad3,5 iPad3,6; iPad 5=iPad6,12; iPhone 4=iPhone3,1 iPhone3,2 iPhone3,3
iPhone 4S=iPhone4,1; iPhone 5=iPhone5,1 iPhone5,2; iPhone 5S=iPhone6,1 iPhone6,2
iPhone 5C=iPhone5,3 iPhone5,4; iPad Mini 1=iPad2,5 iPad2,6 iPad2,7; iPad Mini 2=iPad4,4 iPad4,5 iPad4,6
iPad Mini 3=iPad4,7 iPad4,8 iPad4,9; iPad Air 1=iPad4,2; iPad Air 2=iPad5,4; iPad Pro 9.7"=iPad6,3
iPad Pro 9.7" cellular=iPad6,4; iPad Pro 12.9"=iPad6,7; iPad Pro 12.9" cellular=iPad6,8
iPad Pro 2 12.9"=iPad7,1; iPad Pro 2 12.9" cellular=iPad7,2; iPhone 6=iPhone7,2; iPhone 6 Plus=iPhone7,1
iPhone 6S=iPhone8,1; iPhone 6S Plus=iPhone8,2; iPhone SE=iPhone8,4; iPhone 7=iPhone9,1 iPhone9,3
iPhone 7 Plus=iPhone9,2 iPhone9,4; iPhone 8=iPhone10,4; iPhone 8 Plus=iPhone10,5
iPhone X=iPhone10,3 iPhone10,6; iPhone XS=iPhone11,2; iPhone XSMax=iPhone11,4
iPhone XSMaxChina=iPhone11,6; iPhone XR=iPhone11,8; iPhone11=iPhone12,1; iPhone11Pro=iPhone12,3
iPhone11ProMax=iPhone12,5; iPhone SE 2nd Gen=iPhone12,8; iPhone 12 Mini=iPhone13,1; iPhone 12=iPhone13,2
iPhone 12 Pro=iPhone13,3; iPhone 12 Pro Max=iPhone13,4; iPhone 13 Pro=iPhone14,2
iPhone 13 Pro Max=iPhone14,3; iPhone 13 Mini=iPhone14,4; iPhone 13=iPhone14,5
iPad Pro 10.5-inch 2nd Gen=iPad7,3 iPad7,4; iPad 6th Gen (WiFi)=iPad7,5
iPad 6th Gen (WiFi+Cellular)=iPad7,6; iPad 7th Gen 10.2-inch (WiFi)=iPad7,11
iPad 7th Gen 10.2-inch (WiFi+Cellular)=iPad7,12; iPad Pro 11 inch 3rd Gen (WiFi)=iPad8,1
iPad Pro 11 inch 3rd Gen (1TB, WiFi)=iPad8,2; iPad Pro 11 inch 3rd Gen (WiFi+Cellular)=iPad8,3
iPad Pro 11 inch 3rd Gen (1TB, WiFi+Cellular)=iPad8,4; iPad Pro 12.9 inch 3rd Gen (WiFi)=iPad8,5
iPad Pro 12.9 inch 3rd Gen (1TB, WiFi)=iPad8,6; iPad Pro 12.9 inch 3rd Gen (WiFi+Cellular)=iPad8,7
iPad Pro 12.9 inch 3rd Gen (1TB, WiFi+Cellular)=iPad8,8; iPad Pro 11 inch 4th Gen (WiFi)=iPad8,9
iPad Pro 11 inch 4th Gen (WiFi+Cellular)=iPad8,10; iPad Pro 12.9 inch 4th Gen (WiFi)=iPad8,11
iPad Pro 12.9 inch 4th Gen (WiFi+Cellular)=iPad8,12; iPad mini 5th Gen (WiFi)=iPad11,1
iPad mini 5th Gen=iPad11,2; iPad Air 3rd Gen (WiFi)=iPad11,3; iPad Air 3rd Gen=iPad11,4
iPad 8th Gen (WiFi)=iPad11,6; iPad 8th Gen (WiFi+Cellular)=iPad11,7; iPad 9th Gen=iPad12,2
iPad mini 6th Gen=iPad14,2; iPad Air 4th Gen (WiFi)=iPad13,1; iPad Air 4th Gen (WiFi+Cellular)=iPad13,2
iPad Pro 11 inch 5th Gen=iPad13,4 iPad13,5 iPad13,6 iPad13,7
iPad Pro 12.9 inch 5th Gen=iPad13,8 iPad13,9 iPad13,10 iPad13,11; ?unrecognized?=unrecognized
)";

TEST(Device, NamesEveryKnownMachine) {
  const Device device;
  std::string table = knownModels;
  std::ranges::replace(table, ';', '\n');
  std::istringstream models(table);
  std::size_t count = 0;
  for (std::string model; std::getline(models >> std::ws, model);) {
    const auto equals = model.find('=');
    std::istringstream machines(model.substr(equals + 1));
    for (std::string machine; machines >> machine; ++count)
      EXPECT_EQ(device.modelName(machine), model.substr(0, equals)) << machine;
  }
  EXPECT_EQ(count, 111u);
}

TEST(Device, LooksUpExactly) {
  const Device device;
  for (const char* unknown : {"iPhone99,1", "iphone13,2", "iPhone13,2 ", "iPhone13", "", "Unrecognized"})
    EXPECT_EQ(device.modelName(unknown), "Unrecognized") << unknown;
}

TEST(Device, LetsASimulatorSayWhatItStandsFor) {
  testing_platform::SettableDevice hardware;
  auto values = hardware.values();
  values.environment["SIMULATOR_MODEL_IDENTIFIER"] = "iPad8,1";
  hardware.set(values);
  EXPECT_EQ(machineIdentifier(hardware), "iPad8,1");
  values.machineIdentifier = "iPhone\xc3\xa9";
  hardware.set(values);
  EXPECT_DEATH((void)machineIdentifier(hardware), "Fatal error: the machine identifier is not ASCII");
}

}  // namespace
}  // namespace VorselKelp
