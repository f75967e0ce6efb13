#pragma once

#include "platform/linux/system/FileDescriptor.h"
#include "platform/linux/system/GlibOwner.h"

#include <cstdint>
#include <functional>
#include <webkit/webkit.h>

namespace quillox {

/// Asks the thread that runs a page's scripts for a sign of life, without a script.
///
/// The engine's own messages wake five threads and the cleaners of its heaps. So the first one
/// hands our module in the page's process the end of a socket, over which it is asked from then
/// on. Without that module, and until it has the socket, there is a message each time; that nobody
/// there knows it is an answer, too. Main thread only.
class PageProcessPing {
public:
    explicit PageProcessPing(WebKitWebView* view)
        : m_view(view)
    {
    }
    ~PageProcessPing() { reset(); }
    PageProcessPing(const PageProcessPing&) = delete;
    PageProcessPing& operator=(const PageProcessPing&) = delete;

    /// Calls back with the answer. Only the last of several calls under way is answered.
    void ping(std::function<void()> onAnswer);

    /// The page may be in another process from now on. Nothing is answered any more.
    void reset();

private:
    bool askOverSocket();
    void askByMessage();
    WebKitUserMessage* makeMessage(); ///< A floating reference, which the sending takes.
    void handleReply(bool isSocketTaken);
    bool handleReadable();
    void answer();
    void cancelMessage();

    WebKitWebView* m_view;
    std::function<void()> m_onAnswer;
    GObjectOwner<GCancellable> m_message; ///< While one is under way.
    FileDescriptor m_socket;
    unsigned m_source = 0; ///< Of the socket, once the other side has its end.
    std::uint8_t m_question = 0; ///< Told apart from earlier ones by their numbers.
};

} // namespace quillox
