#pragma once

#include <glib-object.h>
#include <memory>

namespace quillox {

struct GObjectUnref {
    void operator()(gpointer object) const { g_object_unref(object); }
};

/// Owns one reference to a GObject of a C library.
template <typename Type> using GObjectOwner = std::unique_ptr<Type, GObjectUnref>;

struct GFree {
    void operator()(gpointer memory) const { g_free(memory); }
};

using GTextOwner = std::unique_ptr<char, GFree>;

struct GErrorFree {
    void operator()(GError* error) const { g_error_free(error); }
};

using GErrorOwner = std::unique_ptr<GError, GErrorFree>;

struct GVariantUnref {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};

using GVariantOwner = std::unique_ptr<GVariant, GVariantUnref>;

} // namespace quillox
