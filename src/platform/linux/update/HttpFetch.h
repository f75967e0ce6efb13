#pragma once

#include "platform/linux/system/GlibOwner.h"
#include "ports/UpdateFeed.h"

#include <chrono>
#include <functional>
#include <libsoup/soup.h>
#include <string>

namespace quillox {

/// One GET over HTTP on the thread that calls it, which it keeps waiting.
class HttpFetch {
public:
    using Outcome = UpdateFeed::Outcome;

    /// `cancellable` may be cancelled from any thread, and outlives this.
    HttpFetch(GCancellable* cancellable, std::chrono::seconds silence);
    ~HttpFetch();
    HttpFetch(const HttpFetch&) = delete;
    HttpFetch& operator=(const HttpFetch&) = delete;

    Outcome text(const std::string& address, std::size_t limit);
    Outcome file(const UpdateFeed::File&, const std::function<void(std::uint64_t)>& onProgress);

private:
    using Take = std::function<bool(const char*, std::size_t)>;

    /// Sends the request, from that byte on, and reads what comes until `take` says no or the end.
    struct Answer {
        guint status = 0;
        goffset length = -1; ///< Of this answer; -1 when the server does not say.
        goffset firstByte = 0;
        goffset wholeSize = -1; ///< Of the file; -1 when the server does not say.
        GObjectOwner<GInputStream> body;
    };
    Outcome ask(const std::string& address, std::uint64_t firstByte, Answer&);
    Outcome read(GInputStream*, const Take&);
    Outcome outcomeOf(const GError*) const;

    struct ContextUnref {
        void operator()(GMainContext* context) const { g_main_context_unref(context); }
    };

    GCancellable* m_cancellable;
    std::unique_ptr<GMainContext, ContextUnref> m_context;
    GObjectOwner<SoupSession> m_session;
};

} // namespace quillox
