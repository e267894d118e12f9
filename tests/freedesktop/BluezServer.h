#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "freedesktop/BusTest.h"

namespace VorselKelp::freedesktop {

/// The frame of a beacon.
std::vector<std::uint8_t> beaconFrame(std::uint8_t lastOfUUID, std::uint16_t major, std::uint16_t minor);

/// A device's properties with one frame; `near` when it is in range.
VariantPtr deviceProperties(const std::vector<std::uint8_t>& frame, bool near = true,
                            std::uint16_t company = 0x004C);

/// A Bluetooth service whose adapters hear what the test says.
class BluezServer {
 public:
  explicit BluezServer(const std::string& address);

  /// What is there before anybody asks.
  void place(const std::string& path, const char* interface, VariantPtr properties);
  void placeAdapter(const std::string& path);
  /// What comes or goes later, or sends again.
  void add(const std::string& path, const char* interface, const VariantPtr& properties);
  void remove(const std::string& path, const char* interface);
  void change(const std::string& path, const char* interface, const VariantPtr& properties);
  void emit(const std::string& path, const char* interface, const char* signal, GVariant* arguments);

  std::string refusal;              ///< StartDiscovery's error; empty: it works
  std::vector<std::string> called;  ///< adapter methods: "path method arguments"
  std::string client;               ///< who called last

 private:
  void call(const std::string& path, const std::string& method, GVariant* arguments,
            GDBusMethodInvocation* invocation);
  [[nodiscard]] GVariant* objects() const;

  BusService service_;
  std::map<std::string, std::pair<const char*, VariantPtr>> objects_;
};

}  // namespace VorselKelp::freedesktop
