#pragma once

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <string>

#include "support/DynamicLibrary.h"

namespace VorselKelp::posix {

/// The functions of gdk-pixbuf and GObject that are used here, found at run time.
class PixbufLibrary {
 public:
  explicit PixbufLibrary(const std::string& name);

  /// Why there is no gdk-pixbuf, empty when there is.
  [[nodiscard]] const std::string& error() const { return library_.error(); }

  decltype(gdk_pixbuf_loader_new)* loaderNew = nullptr;
  decltype(gdk_pixbuf_loader_write)* loaderWrite = nullptr;
  decltype(gdk_pixbuf_loader_close)* loaderClose = nullptr;
  decltype(gdk_pixbuf_loader_set_size)* loaderSetSize = nullptr;
  decltype(gdk_pixbuf_loader_get_format)* loaderFormat = nullptr;
  decltype(gdk_pixbuf_loader_get_pixbuf)* loaderPixbuf = nullptr;
  decltype(gdk_pixbuf_format_get_extensions)* formatExtensions = nullptr;
  decltype(gdk_pixbuf_get_width)* width = nullptr;
  decltype(gdk_pixbuf_get_height)* height = nullptr;
  decltype(gdk_pixbuf_get_rowstride)* rowStride = nullptr;
  decltype(gdk_pixbuf_get_n_channels)* channels = nullptr;
  decltype(gdk_pixbuf_get_pixels)* pixels = nullptr;
  decltype(gdk_pixbuf_fill)* fill = nullptr;
  decltype(gdk_pixbuf_get_option)* option = nullptr;
  decltype(gdk_pixbuf_new_from_data)* newFromData = nullptr;
  decltype(gdk_pixbuf_new_subpixbuf)* part = nullptr;
  decltype(gdk_pixbuf_scale_simple)* scale = nullptr;
  decltype(gdk_pixbuf_save_to_bufferv)* saveToBuffer = nullptr;
  decltype(g_signal_connect_data)* signalConnect = nullptr;
  decltype(g_object_unref)* unref = nullptr;
  decltype(g_error_free)* errorFree = nullptr;
  decltype(g_strfreev)* textsFree = nullptr;
  decltype(g_free)* memoryFree = nullptr;

 private:
  DynamicLibrary library_;
};

}  // namespace VorselKelp::posix
