#include "core/Device.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/FatalError.h"

namespace VorselKelp {
namespace {

constexpr std::array<MachineModel, 111> machineModels{{
    {"i386", Model::simulator},
    {"x86_64", Model::simulator},
    {"iPod1,1", Model::iPod1},
    {"iPod2,1", Model::iPod2},
    {"iPod3,1", Model::iPod3},
    {"iPod4,1", Model::iPod4},
    {"iPod5,1", Model::iPod5},
    {"iPad2,1", Model::iPad2},
    {"iPad2,2", Model::iPad2},
    {"iPad2,3", Model::iPad2},
    {"iPad2,4", Model::iPad2},
    {"iPad3,1", Model::iPad3},
    {"iPad3,2", Model::iPad3},
    {"iPad3,3", Model::iPad3},
    {"iPad3,4", Model::iPad4},
    {"iPad3,5", Model::iPad4},
    {"iPad3,6", Model::iPad4},
    {"iPad6,12", Model::iPad5},
    {"iPhone3,1", Model::iPhone4},
    {"iPhone3,2", Model::iPhone4},
    {"iPhone3,3", Model::iPhone4},
    {"iPhone4,1", Model::iPhone4S},
    {"iPhone5,1", Model::iPhone5},
    {"iPhone5,2", Model::iPhone5},
    {"iPhone6,1", Model::iPhone5S},
    {"iPhone6,2", Model::iPhone5S},
    {"iPhone5,3", Model::iPhone5C},
    {"iPhone5,4", Model::iPhone5C},
    {"iPad2,5", Model::iPadMini1},
    {"iPad2,6", Model::iPadMini1},
    {"iPad2,7", Model::iPadMini1},
    {"iPad4,4", Model::iPadMini2},
    {"iPad4,5", Model::iPadMini2},
    {"iPad4,6", Model::iPadMini2},
    {"iPad4,7", Model::iPadMini3},
    {"iPad4,8", Model::iPadMini3},
    {"iPad4,9", Model::iPadMini3},
    {"iPad4,2", Model::iPadAir1},
    {"iPad5,4", Model::iPadAir2},
    {"iPad6,3", Model::iPadPro9_7},
    {"iPad6,4", Model::iPadPro9_7_cell},
    {"iPad6,7", Model::iPadPro12_9},
    {"iPad6,8", Model::iPadPro12_9_cell},
    {"iPad7,1", Model::iPadPro2_12_9},
    {"iPad7,2", Model::iPadPro2_12_9_cell},
    {"iPhone7,2", Model::iPhone6},
    {"iPhone7,1", Model::iPhone6plus},
    {"iPhone8,1", Model::iPhone6S},
    {"iPhone8,2", Model::iPhone6Splus},
    {"iPhone8,4", Model::iPhoneSE},
    {"iPhone9,1", Model::iPhone7},
    {"iPhone9,3", Model::iPhone7},
    {"iPhone9,2", Model::iPhone7plus},
    {"iPhone9,4", Model::iPhone7plus},
    {"iPhone10,4", Model::iPhone8},
    {"iPhone10,5", Model::iPhone8plus},
    {"iPhone10,3", Model::iPhoneX},
    {"iPhone10,6", Model::iPhoneX},
    {"iPhone11,2", Model::iPhoneXS},
    {"iPhone11,4", Model::iPhoneXSMax},
    {"iPhone11,6", Model::iPhoneXSMaxChina},
    {"iPhone11,8", Model::iPhoneXR},
    {"iPhone12,1", Model::iPhone11},
    {"iPhone12,3", Model::iPhone11Pro},
    {"iPhone12,5", Model::iPhone11ProMax},
    {"iPhone12,8", Model::iPhoneSE2ndGen},
    {"iPhone13,1", Model::iPhone12Mini},
    {"iPhone13,2", Model::iPhone12},
    {"iPhone13,3", Model::iPhone12Pro},
    {"iPhone13,4", Model::iPhone12ProMax},
    {"iPhone14,2", Model::iPhone13Pro},
    {"iPhone14,3", Model::iPhone13ProMax},
    {"iPhone14,4", Model::iPhone13Mini},
    {"iPhone14,5", Model::iPhone13},
    {"iPad7,3", Model::iPadPro105inch2ndGen},
    {"iPad7,4", Model::iPadPro105inch2ndGen},
    {"iPad7,5", Model::iPad6thGenWiFi},
    {"iPad7,6", Model::iPad6thGen_cell},
    {"iPad7,11", Model::iPad7thGen102inchWiFi},
    {"iPad7,12", Model::iPad7thGen102inch_cell},
    {"iPad8,1", Model::iPadPro11inch3rdGenWiFi},
    {"iPad8,2", Model::iPadPro11inch3rdGenTB_WiFi},
    {"iPad8,3", Model::iPadPro11inch3rdGen_cell},
    {"iPad8,4", Model::iPadPro11inch3rdGen1Tb_cell},
    {"iPad8,5", Model::iPadPro129inch3rdGenWiFi},
    {"iPad8,6", Model::iPadPro129inch3rdGen1TBWiFi},
    {"iPad8,7", Model::iPadPro129inch3rdGen_cell},
    {"iPad8,8", Model::iPadPro129inch3rdGen1T_cell},
    {"iPad8,9", Model::iPadPro11inch4thGenWiFi},
    {"iPad8,10", Model::iPadPro11inch4thGen_cell},
    {"iPad8,11", Model::iPadPro129inch4thGenWiFi},
    {"iPad8,12", Model::iPadPro129inch4thGen_cell},
    {"iPad11,1", Model::iPadmini5thGenWifi},
    {"iPad11,2", Model::iPadmini5thGen},
    {"iPad11,3", Model::iPadAir3rdGenWifi},
    {"iPad11,4", Model::iPadAir3rdGen},
    {"iPad11,6", Model::iPad8thGenWiFi},
    {"iPad11,7", Model::iPad8thGen_cell},
    {"iPad12,2", Model::iPad9thGen},
    {"iPad14,2", Model::iPadmini6thGen},
    {"iPad13,1", Model::iPadAir4thGenWiFi},
    {"iPad13,2", Model::iPadAir4thGen_cell},
    {"iPad13,4", Model::iPadPro11inch5thGen},
    {"iPad13,5", Model::iPadPro11inch5thGen},
    {"iPad13,6", Model::iPadPro11inch5thGen},
    {"iPad13,7", Model::iPadPro11inch5thGen},
    {"iPad13,8", Model::iPadPro129inch5thGen},
    {"iPad13,9", Model::iPadPro129inch5thGen},
    {"iPad13,10", Model::iPadPro129inch5thGen},
    {"iPad13,11", Model::iPadPro129inch5thGen},
    {"unrecognized", Model::unrecognized},
}};

}  // namespace

Device::Device() {
  modelMap_.reserve(machineModels.size());
  for (const auto& entry : machineModels) modelMap_.emplace(entry.machineIdentifier, entry.model);
}

std::string_view Device::modelName(std::string_view machineIdentifier) const {
  const auto found = modelMap_.find(machineIdentifier);
  return found == modelMap_.end() ? "Unrecognized" : displayName(found->second);
}

std::string machineIdentifier(platform::Device& device) {
  std::string machine = device.machineIdentifier();
  if (std::ranges::any_of(machine, [](char c) { return static_cast<unsigned char>(c) > 127; }))
    fatalError("the machine identifier is not ASCII");
  return device.environmentVariable("SIMULATOR_MODEL_IDENTIFIER").value_or(std::move(machine));
}

}  // namespace VorselKelp
