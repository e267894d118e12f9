#include "image/PixbufLibrary.h"

namespace VorselKelp::posix {

PixbufLibrary::PixbufLibrary(const std::string& name) : library_(name) {
  library_.find(loaderNew, "gdk_pixbuf_loader_new");
  library_.find(loaderWrite, "gdk_pixbuf_loader_write");
  library_.find(loaderClose, "gdk_pixbuf_loader_close");
  library_.find(loaderSetSize, "gdk_pixbuf_loader_set_size");
  library_.find(loaderFormat, "gdk_pixbuf_loader_get_format");
  library_.find(loaderPixbuf, "gdk_pixbuf_loader_get_pixbuf");
  library_.find(formatExtensions, "gdk_pixbuf_format_get_extensions");
  library_.find(width, "gdk_pixbuf_get_width");
  library_.find(height, "gdk_pixbuf_get_height");
  library_.find(rowStride, "gdk_pixbuf_get_rowstride");
  library_.find(channels, "gdk_pixbuf_get_n_channels");
  library_.find(pixels, "gdk_pixbuf_get_pixels");
  library_.find(fill, "gdk_pixbuf_fill");
  library_.find(option, "gdk_pixbuf_get_option");
  library_.find(newFromData, "gdk_pixbuf_new_from_data");
  library_.find(part, "gdk_pixbuf_new_subpixbuf");
  library_.find(scale, "gdk_pixbuf_scale_simple");
  library_.find(saveToBuffer, "gdk_pixbuf_save_to_bufferv");
  library_.find(signalConnect, "g_signal_connect_data");
  library_.find(unref, "g_object_unref");
  library_.find(errorFree, "g_error_free");
  library_.find(textsFree, "g_strfreev");
  library_.find(memoryFree, "g_free");
}

}  // namespace VorselKelp::posix
