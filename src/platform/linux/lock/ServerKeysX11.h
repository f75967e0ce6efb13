#pragma once

#include "platform/linux/lock/Restoration.h"

#include <functional>
#include <gdk/gdk.h>
#include <memory>
#include <set>

namespace quillox {

/// The actions that an X server performs itself at keys, which no grab stops: it switches the
/// virtual terminal or the video mode, ends, breaks grabs, and turns accessibility features on when
/// Shift is pressed five times. They are properties of each keyboard's map and of the one that
/// stands for all, and stay as they are when this process dies; a new run of the server starts with
/// its own. Every call waits for the server's answers. Main thread only.
class ServerKeysX11 {
public:
    /// None when `display` is not an X server's or cannot tell its key maps.
    static std::unique_ptr<ServerKeysX11> make(GdkDisplay* display);
    ~ServerKeysX11();

    /// Called when, since `note`, a key map has changed or a keyboard has come or gone.
    std::function<void()> onChange;

    /// Adds to `taken` what there is now to take away; what is there already stays as it was found,
    /// save where the keyboard has got another map.
    void note(TakenServerKeys& taken);

    /// Takes away what is in `taken`, no more. Keyboards that are gone do not matter.
    void takeAway(const TakenServerKeys& taken);

    /// Puts back what is in `taken`, at keys that have no action now, and stops watching.
    void putBack(const TakenServerKeys& taken);

private:
    explicit ServerKeysX11(GdkDisplay*);

    static gboolean handleEvent(GdkDisplay*, gpointer event, gpointer self);
    void stopWatching();

    GdkDisplay* m_display;
    int m_xkbEventType = 0;
    int m_inputExtension = 0;
    gulong m_watch = 0;
    std::set<int> m_renewed; ///< Keyboards with a new map, by identifier.
};

} // namespace quillox
