#include "collection_server/Picture.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace collection_server {
namespace {

constexpr int width = 160;
constexpr int height = 90;
constexpr int horizon = 58;

using Colour = std::array<std::uint8_t, 3>;

Colour pixel(int x, int y, std::uint8_t tint) {
  const int dx = x - width / 2;
  const int dy = y - horizon;
  if (y < horizon && dx * dx + dy * dy < 24 * 24) return {255, 214, 90};
  const auto light = static_cast<std::uint8_t>(y * 2);
  if (y < horizon)
    return {static_cast<std::uint8_t>(tint / 2 + 60), static_cast<std::uint8_t>(90 + light), 230};
  const bool glitter = (x + 3 * y) % 11 < 2 && dx * dx < 30 * 30;
  return glitter ? Colour{250, 230, 160} : Colour{20, static_cast<std::uint8_t>(60 + tint / 4), 140};
}

std::string pngOf(const std::vector<std::uint8_t>& pixels) {
  const std::unique_ptr<GdkPixbuf, decltype(&g_object_unref)> picture(
      gdk_pixbuf_new_from_data(pixels.data(), GDK_COLORSPACE_RGB, false, 8, width, height, width * 3, nullptr,
                               nullptr),
      g_object_unref);
  gchar* bytes = nullptr;
  gsize size = 0;
  if (!gdk_pixbuf_save_to_buffer(picture.get(), &bytes, &size, "png", nullptr, nullptr)) return {};
  const std::unique_ptr<gchar, decltype(&g_free)> owner(bytes, g_free);
  return {bytes, size};
}

}  // namespace

std::string drawPicture(std::string_view name) {
  std::uint8_t tint = 0;
  for (const char c : name) tint = static_cast<std::uint8_t>(tint * 31 + c);
  std::vector<std::uint8_t> pixels;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const auto colour = pixel(x, y, tint);
      pixels.insert(pixels.end(), colour.begin(), colour.end());
    }
  }
  return pngOf(pixels);
}

}  // namespace collection_server
