#pragma once

#include <gio/gio.h>

#include <memory>

namespace VorselKelp::freedesktop {

// Owners of what GLib hands out, for C++ that speaks with it.

struct ObjectRelease {
  void operator()(gpointer object) const { g_object_unref(object); }
};
template <class T>
using ObjectPtr = std::unique_ptr<T, ObjectRelease>;

struct VariantRelease {
  void operator()(GVariant* value) const { g_variant_unref(value); }
};
using VariantPtr = std::unique_ptr<GVariant, VariantRelease>;

/// Owns a value that was just made, or one that others hold as well.
inline VariantPtr hold(GVariant* value) {
  return VariantPtr(g_variant_ref_sink(value));
}

struct ErrorRelease {
  void operator()(GError* error) const { g_error_free(error); }
};
using ErrorPtr = std::unique_ptr<GError, ErrorRelease>;

struct MemoryRelease {
  void operator()(gpointer memory) const { g_free(memory); }
};
using TextPtr = std::unique_ptr<char, MemoryRelease>;

}  // namespace VorselKelp::freedesktop
