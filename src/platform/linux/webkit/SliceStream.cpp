#include "platform/linux/webkit/SliceStream.h"

#include <algorithm>

namespace quillox {

namespace {

    struct Slice {
        std::shared_ptr<const SiteFile> file;
        std::uint64_t offset = 0;
        std::uint64_t left = 0; ///< Bytes until the end of the slice.
    };

    struct SliceStream {
        GInputStream parent;
        Slice* slice; ///< Owned; the type system allocates this struct and runs no constructor.
    };

    gssize readSlice(GInputStream* stream, void* buffer, gsize count, GCancellable*, GError** error)
    {
        auto& slice = *reinterpret_cast<SliceStream*>(stream)->slice;
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count, slice.left));
        const auto bytes = slice.file
            ? slice.file->read(slice.offset, { static_cast<std::byte*>(buffer), wanted })
            : std::size_t { 0 };
        if (!bytes) {
            g_set_error_literal(error, G_IO_ERROR, G_IO_ERROR_FAILED, "cannot be read");
            return -1;
        }
        slice.offset += *bytes;
        slice.left -= *bytes;
        return static_cast<gssize>(*bytes);
    }

    void finalizeSlice(GObject* object)
    {
        delete reinterpret_cast<SliceStream*>(object)->slice;
        G_OBJECT_CLASS(g_type_class_peek_static(G_TYPE_INPUT_STREAM))->finalize(object);
    }

    void initializeClass(gpointer type, gpointer)
    {
        G_INPUT_STREAM_CLASS(type)->read_fn = readSlice;
        G_OBJECT_CLASS(type)->finalize = finalizeSlice;
    }

    GType sliceStreamType()
    {
        static const GType type
            = g_type_register_static_simple(G_TYPE_INPUT_STREAM, "QuilloxSliceStream",
                sizeof(GInputStreamClass), initializeClass, sizeof(SliceStream), nullptr, {});
        return type;
    }

} // namespace

GObjectOwner<GInputStream> makeSliceStream(const SchemeResponse& response)
{
    GObjectOwner<GInputStream> stream(G_INPUT_STREAM(g_object_new(sliceStreamType(), nullptr)));
    reinterpret_cast<SliceStream*>(stream.get())->slice
        = new Slice { response.file, response.offset, response.length };
    return stream;
}

} // namespace quillox
