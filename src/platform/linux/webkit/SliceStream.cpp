#include "platform/linux/webkit/SliceStream.h"

#include <algorithm>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace quillox {

namespace {

    constexpr std::size_t blockSize = std::size_t { 512 } * 1024;

    /// So many blocks may be on their way to the page beside the one that is read.
    constexpr int mostBlocksUnderway = 2;

    /// The engine passes on what it reads in one message each, and gives a message of more than
    /// 4096 bytes a piece of shared memory of its own, which costs more than two small ones.
    constexpr std::size_t partSize = 3840;

    /// A part of a file, read block by block. Any thread, one at a time.
    class Slice {
    public:
        explicit Slice(const SchemeResponse& response)
            : m_file(response.file)
            , m_offset(response.offset)
            , m_left(response.file ? response.length : 0)
        {
        }

        bool needsBlock() const { return m_block.empty() && m_left > 0; }

        /// Waits for the disk. A file that has become shorter ends here.
        void readBlock()
        {
            m_memory.resize(std::min<std::uint64_t>(blockSize, m_left));
            const auto bytes = m_file->read(m_offset, m_memory);
            m_isBroken = !bytes;
            m_block = std::span(m_memory).first(bytes.value_or(0));
            m_offset += m_block.size();
            m_left = m_block.empty() ? 0 : m_left - m_block.size();
        }

        /// The number of bytes out of the block; 0 at the end, none when the file cannot be read.
        std::optional<std::size_t> take(std::span<std::byte> target)
        {
            if (m_isBroken)
                return std::nullopt;
            const auto part = m_block.first(std::min({ target.size(), m_block.size(), partSize }));
            std::ranges::copy(part, target.begin());
            m_block = m_block.subspan(part.size());
            return part.size();
        }

    private:
        std::shared_ptr<const SiteFile> m_file;
        std::uint64_t m_offset;
        std::uint64_t m_left; ///< Bytes that are not read yet.
        bool m_isBroken = false;
        std::vector<std::byte> m_memory;
        std::span<const std::byte> m_block; ///< What is read and not taken.
    };

    /// What the engine waits for.
    struct Read {
        std::span<std::byte> target;
        GObjectOwner<GCancellable> cancellable;
        GAsyncReadyCallback onRead;
        gpointer data;
    };

    struct State {
        Slice slice;
        std::optional<Read> read;
        bool isAnswering = false;
        bool isAwaitingPage = false;
        int blocksUnderway = 0;
    };

    /// What the type system allocates, and runs no constructor for.
    struct SliceStream {
        GInputStream parent;
        State* state; ///< Owned.
        GWeakRef view;
    };

    SliceStream* sliceStream(gpointer stream)
    {
        return static_cast<SliceStream*>(stream);
    }

    void fetchBlock(SliceStream*);

    /// Many reads one after the other: a turn of the main loop costs more than a read.
    void answerReads(SliceStream* stream)
    {
        auto& state = *stream->state;
        state.isAnswering = true;
        while (state.read && !state.slice.needsBlock()) {
            const auto read = *std::exchange(state.read, std::nullopt);
            const GObjectOwner<GTask> result(
                g_task_new(stream, read.cancellable.get(), nullptr, nullptr));
            if (const auto bytes = state.slice.take(read.target))
                g_task_return_int(result.get(), static_cast<gssize>(*bytes));
            else
                g_task_return_new_error(
                    result.get(), G_IO_ERROR, G_IO_ERROR_FAILED, "cannot be read");
            read.onRead(G_OBJECT(stream), G_ASYNC_RESULT(result.get()), read.data);
        }
        state.isAnswering = false;
        if (state.read)
            fetchBlock(stream);
    }

    void readBlock(SliceStream* stream)
    {
        const GObjectOwner<GTask> task(g_task_new(
            stream, nullptr,
            [](GObject* self, GAsyncResult*, gpointer) { answerReads(sliceStream(self)); },
            nullptr));
        g_task_run_in_thread(task.get(), [](GTask* done, gpointer self, gpointer, GCancellable*) {
            sliceStream(self)->state->slice.readBlock();
            g_task_return_boolean(done, TRUE);
        });
    }

    /// The page's process answers in order: it has all that was sent before. That the page is gone
    /// is an answer, too.
    void handleMark(GObject* view, GAsyncResult* result, gpointer data)
    {
        const GObjectOwner<GInputStream> owner(G_INPUT_STREAM(data));
        webkit_web_view_can_execute_editing_command_finish(WEBKIT_WEB_VIEW(view), result, nullptr);
        auto& state = *sliceStream(data)->state;
        --state.blocksUnderway;
        if (std::exchange(state.isAwaitingPage, false))
            readBlock(sliceStream(data));
    }

    void fetchBlock(SliceStream* stream)
    {
        auto& state = *stream->state;
        const GObjectOwner<WebKitWebView> view(
            static_cast<WebKitWebView*>(g_weak_ref_get(&stream->view)));
        if (view) {
            ++state.blocksUnderway;
            // Asks for nothing that depends on the page or could touch it.
            webkit_web_view_can_execute_editing_command(
                view.get(), "mark", nullptr, handleMark, g_object_ref(stream));
        }
        state.isAwaitingPage = state.blocksUnderway > mostBlocksUnderway;
        if (!state.isAwaitingPage)
            readBlock(stream);
    }

    void readAsync(GInputStream* parent, void* buffer, gsize size, int priority,
        GCancellable* cancellable, GAsyncReadyCallback onRead, gpointer data)
    {
        auto* stream = sliceStream(parent);
        auto& state = *stream->state;
        state.read.emplace(Read { { static_cast<std::byte*>(buffer), size },
            GObjectOwner<GCancellable>(
                cancellable ? G_CANCELLABLE(g_object_ref(cancellable)) : nullptr),
            onRead, data });
        if (state.isAnswering)
            return;
        if (state.slice.needsBlock())
            return fetchBlock(stream);
        g_idle_add_full(
            priority,
            [](gpointer self) {
                answerReads(sliceStream(self));
                return G_SOURCE_REMOVE;
            },
            g_object_ref(parent), g_object_unref);
    }

    gssize readNow(GInputStream* parent, void* buffer, gsize size, GCancellable*, GError** error)
    {
        auto& slice = sliceStream(parent)->state->slice;
        if (slice.needsBlock())
            slice.readBlock();
        const auto bytes = slice.take({ static_cast<std::byte*>(buffer), size });
        if (!bytes)
            g_set_error_literal(error, G_IO_ERROR, G_IO_ERROR_FAILED, "cannot be read");
        return bytes ? static_cast<gssize>(*bytes) : -1;
    }

    void finalize(GObject* object)
    {
        auto* stream = sliceStream(object);
        delete stream->state;
        g_weak_ref_clear(&stream->view);
        G_OBJECT_CLASS(g_type_class_peek_static(G_TYPE_INPUT_STREAM))->finalize(object);
    }

    void initializeClass(gpointer type, gpointer)
    {
        G_INPUT_STREAM_CLASS(type)->read_fn = readNow;
        G_INPUT_STREAM_CLASS(type)->read_async = readAsync;
        G_OBJECT_CLASS(type)->finalize = finalize;
    }

    GType sliceStreamType()
    {
        static const GType type
            = g_type_register_static_simple(G_TYPE_INPUT_STREAM, "QuilloxSliceStream",
                sizeof(GInputStreamClass), initializeClass, sizeof(SliceStream), nullptr, {});
        return type;
    }

} // namespace

GObjectOwner<GInputStream> makeSliceStream(const SchemeResponse& response, WebKitWebView* view)
{
    GObjectOwner<GInputStream> owner(G_INPUT_STREAM(g_object_new(sliceStreamType(), nullptr)));
    auto* stream = sliceStream(owner.get());
    stream->state = new State { .slice = Slice(response), .read = std::nullopt };
    g_weak_ref_init(&stream->view, view);
    return owner;
}

} // namespace quillox
