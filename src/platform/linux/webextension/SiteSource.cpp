#include "platform/linux/webextension/SiteSource.h"

#include "local/LocalSchemeHandler.h"
#include "platform/linux/system/SiteFilesLinux.h"
#include "ports/FileTypes.h"

#include <gst/base/gstbasesrc.h>

#include <mutex>

namespace quillox {

namespace {

    constexpr auto elementName = "quilloxsitesrc";
    constexpr guint blockSize = 64 * 1024; // bytes

    /// GStreamer finds out by itself what a file holds.
    class NoFileTypes final : public FileTypes {
    public:
        std::optional<std::string> mimeType(const std::string&) const override
        {
            return std::nullopt;
        }
    };

    /// What one element reads. GStreamer asks from several threads.
    class Media {
    public:
        void setUrl(const char* url)
        {
            const std::lock_guard lock(m_mutex);
            m_url = url;
        }

        std::string url() const
        {
            const std::lock_guard lock(m_mutex);
            return m_url;
        }

        /// False when there is no such file.
        bool open(const std::string& root)
        {
            const SiteFilesLinux files;
            const NoFileTypes types;
            LocalSchemeHandler handler(root, files, types);
            const auto response = handler.answer({ .url = url(), .range = std::nullopt });
            const std::lock_guard lock(m_mutex);
            m_file = response ? response->file : nullptr;
            return m_file != nullptr;
        }

        void close()
        {
            const std::lock_guard lock(m_mutex);
            m_file.reset();
        }

        /// None while it is not open.
        std::shared_ptr<const SiteFile> file() const
        {
            const std::lock_guard lock(m_mutex);
            return m_file;
        }

    private:
        mutable std::mutex m_mutex;
        std::string m_url;
        std::shared_ptr<const SiteFile> m_file;
    };

    struct SiteSource {
        GstBaseSrc parent;
        Media* media; ///< Owned; the type system allocates this struct and runs no constructor.
    };

    Media& mediaOf(gpointer source)
    {
        return *static_cast<SiteSource*>(source)->media;
    }

    /// Set before the first element is made.
    std::string& rootFolder()
    {
        static std::string folder;
        return folder;
    }

    gboolean start(GstBaseSrc* source) noexcept
    {
        if (mediaOf(source).open(rootFolder()))
            return TRUE;
        GST_ELEMENT_ERROR(source, RESOURCE, NOT_FOUND, (nullptr), ("not a file of the site"));
        return FALSE;
    }

    gboolean stop(GstBaseSrc* source) noexcept
    {
        mediaOf(source).close();
        return TRUE;
    }

    gboolean isSeekable(GstBaseSrc*) noexcept
    {
        return TRUE;
    }

    gboolean readSize(GstBaseSrc* source, guint64* size) noexcept
    {
        const auto file = mediaOf(source).file();
        if (file)
            *size = file->size();
        return file != nullptr;
    }

    GstFlowReturn fill(GstBaseSrc* source, guint64 offset, guint length, GstBuffer* buffer) noexcept
    {
        const auto file = mediaOf(source).file();
        GstMapInfo map;
        if (!file || !gst_buffer_map(buffer, &map, GST_MAP_WRITE))
            return GST_FLOW_ERROR;
        std::size_t count = 0;
        std::optional<std::size_t> bytes;
        do {
            bytes = file->read(
                offset + count, { reinterpret_cast<std::byte*>(map.data) + count, length - count });
            count += bytes.value_or(0);
        } while (bytes.value_or(0) > 0 && count < length);
        gst_buffer_unmap(buffer, &map);
        if (!bytes) {
            GST_ELEMENT_ERROR(source, RESOURCE, READ, (nullptr), ("cannot be read"));
            return GST_FLOW_ERROR;
        }
        gst_buffer_set_size(buffer, static_cast<gssize>(count));
        return count > 0 || length == 0 ? GST_FLOW_OK : GST_FLOW_EOS;
    }

    gboolean query(GstBaseSrc* source, GstQuery* question) noexcept
    {
        if (GST_QUERY_TYPE(question) != GST_QUERY_URI) {
            auto* parent = GST_BASE_SRC_CLASS(g_type_class_peek_static(GST_TYPE_BASE_SRC));
            return parent->query(source, question);
        }
        gst_query_set_uri(question, mediaOf(source).url().c_str());
        return TRUE;
    }

    void finalize(GObject* object) noexcept
    {
        delete reinterpret_cast<SiteSource*>(object)->media;
        G_OBJECT_CLASS(g_type_class_peek_static(GST_TYPE_BASE_SRC))->finalize(object);
    }

    void initializeClass(gpointer type, gpointer)
    {
        static GstStaticPadTemplate pad
            = GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS_ANY);
        gst_element_class_add_static_pad_template(GST_ELEMENT_CLASS(type), &pad);
        gst_element_class_set_static_metadata(GST_ELEMENT_CLASS(type), "Site source", "Source/File",
            "Reads files of the sealed website", "Quillox");
        G_OBJECT_CLASS(type)->finalize = finalize;
        auto* source = GST_BASE_SRC_CLASS(type);
        source->start = start;
        source->stop = stop;
        source->is_seekable = isSeekable;
        source->get_size = readSize;
        source->fill = fill;
        source->query = query;
    }

    void initialize(GTypeInstance* instance, gpointer)
    {
        reinterpret_cast<SiteSource*>(instance)->media = new Media;
        gst_base_src_set_blocksize(GST_BASE_SRC(instance), blockSize);
    }

    void initializeUriHandler(gpointer interface, gpointer)
    {
        auto* handler = static_cast<GstURIHandlerInterface*>(interface);
        handler->get_type = [](GType) { return GST_URI_SRC; };
        handler->get_protocols = [](GType) -> const gchar* const* {
            static constexpr const char* protocols[] { LocalSchemeHandler::scheme, nullptr };
            return protocols;
        };
        handler->get_uri
            = [](GstURIHandler* source) { return g_strdup(mediaOf(source).url().c_str()); };
        handler->set_uri = [](GstURIHandler* source, const char* url, GError**) -> gboolean {
            mediaOf(source).setUrl(url);
            return TRUE;
        };
    }

    GType siteSourceType()
    {
        static const GType type = [] {
            const auto made = g_type_register_static_simple(GST_TYPE_BASE_SRC, "QuilloxSiteSource",
                sizeof(GstBaseSrcClass), initializeClass, sizeof(SiteSource), initialize, {});
            const GInterfaceInfo uriHandler { initializeUriHandler, nullptr, nullptr };
            g_type_add_interface_static(made, GST_TYPE_URI_HANDLER, &uriHandler);
            return made;
        }();
        return type;
    }

} // namespace

bool registerSiteSource(const std::string& root)
{
    rootFolder() = root;
    return gst_element_register(nullptr, elementName, GST_RANK_PRIMARY + 100, siteSourceType());
}

} // namespace quillox
