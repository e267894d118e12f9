#include "bluez/BeaconFrame.h"

#include <cstddef>

namespace VorselKelp::freedesktop {
namespace {

constexpr std::uint16_t beaconCompany = 0x004C;

// A frame: kind, length of the rest, proximity UUID, major, minor (both big-endian), power at one metre.
constexpr std::uint8_t beaconKind = 0x02;
constexpr std::uint8_t restSize = 0x15;
constexpr std::size_t frameSize = 2 + restSize;
constexpr std::size_t uuidAt = 2;
constexpr std::size_t uuidSize = 16;
constexpr std::size_t majorAt = uuidAt + uuidSize;
constexpr std::size_t minorAt = majorAt + 2;

std::string uuidText(std::span<const std::uint8_t> bytes) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += digits[bytes[i] >> 4];
    text += digits[bytes[i] & 0xF];
  }
  return text;
}

}  // namespace

std::optional<platform::Beacon> parseBeaconFrame(std::span<const std::uint8_t> frame) {
  if (frame.size() != frameSize || frame[0] != beaconKind || frame[1] != restSize) return std::nullopt;
  const auto number = [&](std::size_t at) {
    return static_cast<std::uint16_t>(frame[at] << 8 | frame[at + 1]);
  };
  return platform::Beacon{uuidText(frame.subspan(uuidAt, uuidSize)), number(majorAt), number(minorAt)};
}

std::optional<platform::Beacon> beaconOf(GVariant* deviceProperties) {
  const VariantPtr frames(
      g_variant_lookup_value(deviceProperties, "ManufacturerData", G_VARIANT_TYPE("a{qv}")));
  if (!frames) return std::nullopt;
  const auto count = g_variant_n_children(frames.get());
  for (gsize i = 0; i < count; ++i) {
    std::uint16_t company = 0;
    GVariant* value = nullptr;
    g_variant_get_child(frames.get(), i, "{qv}", &company, &value);
    const VariantPtr frame(value);
    if (company != beaconCompany || !g_variant_is_of_type(value, G_VARIANT_TYPE_BYTESTRING)) continue;
    gsize size = 0;
    const auto* bytes = static_cast<const std::uint8_t*>(g_variant_get_fixed_array(value, &size, 1));
    return parseBeaconFrame({bytes, size});
  }
  return std::nullopt;
}

}  // namespace VorselKelp::freedesktop
