#pragma once

#include "platform/linux/system/GlibOwner.h"
#include "support/Geometry.h"

#include <functional>
#include <gio/gio.h>
#include <optional>
#include <webkit/webkit.h>

namespace quillox {

/// Reads the colour behind a page, out of the reach of the page's own scripts. Main thread only.
class PageBackground {
public:
    using Callback = std::function<void(std::optional<Color>)>;

    explicit PageBackground(WebKitWebView* view)
        : m_view(view)
    {
    }
    ~PageBackground() { cancel(); }

    /// Takes back what was asked before. None is for a page that cannot be asked or seen.
    void read(Callback);

private:
    void cancel();
    void askStyle();
    void takePicture();
    void finish(std::optional<Color>);

    WebKitWebView* m_view; ///< Owned by whoever owns this.
    GObjectOwner<GCancellable> m_cancellable;
    Callback m_callback;
};

} // namespace quillox
