#pragma once

#include <string_view>

namespace VorselKelp {

/// The hardware models that the servers tell apart.
enum class Model {
  simulator,
  iPod1,
  iPod2,
  iPod3,
  iPod4,
  iPod5,
  iPad2,
  iPad3,
  iPad4,
  iPad5,
  iPhone4,
  iPhone4S,
  iPhone5,
  iPhone5S,
  iPhone5C,
  iPadMini1,
  iPadMini2,
  iPadMini3,
  iPadAir1,
  iPadAir2,
  iPadPro9_7,
  iPadPro9_7_cell,
  iPadPro12_9,
  iPadPro12_9_cell,
  iPadPro2_12_9,
  iPadPro2_12_9_cell,
  iPhone6,
  iPhone6plus,
  iPhone6S,
  iPhone6Splus,
  iPhoneSE,
  iPhone7,
  iPhone7plus,
  iPhone8,
  iPhone8plus,
  iPhoneX,
  iPhoneXS,
  iPhoneXSMax,
  iPhoneXSMaxChina,
  iPhoneXR,
  iPhone11,
  iPhone11Pro,
  iPhone11ProMax,
  iPhoneSE2ndGen,
  iPhone12Mini,
  iPhone12,
  iPhone12Pro,
  iPhone12ProMax,
  iPhone13Pro,
  iPhone13ProMax,
  iPhone13Mini,
  iPhone13,
  iPadPro2ndGen_cell,
  iPadPro105inch2ndGen,
  iPad6thGenWiFi,
  iPad6thGen_cell,
  iPad7thGen102inchWiFi,
  iPad7thGen102inch_cell,
  iPadPro11inch3rdGenWiFi,
  iPadPro11inch3rdGenTB_WiFi,
  iPadPro11inch3rdGen_cell,
  iPadPro11inch3rdGen1Tb_cell,
  iPadPro129inch3rdGenWiFi,
  iPadPro129inch3rdGen1TBWiFi,
  iPadPro129inch3rdGen_cell,
  iPadPro129inch3rdGen1T_cell,
  iPadPro11inch4thGenWiFi,
  iPadPro11inch4thGen_cell,
  iPadPro129inch4thGenWiFi,
  iPadPro129inch4thGen_cell,
  iPadmini5thGenWifi,
  iPadmini5thGen,
  iPadAir3rdGenWifi,
  iPadAir3rdGen,
  iPad8thGenWiFi,
  iPad8thGen_cell,
  iPad9thGen,
  iPadmini6thGen,
  iPadAir4thGenWiFi,
  iPadAir4thGen_cell,
  iPadPro11inch5thGen,
  iPadPro129inch5thGen,
  unrecognized,
};

/// The name sent to the servers. Spellings differ from model to model and are kept: reports are grouped by
/// them.
[[nodiscard]] std::string_view displayName(Model model);

struct MachineModel {
  std::string_view machineIdentifier;
  Model model;
};

}  // namespace VorselKelp
