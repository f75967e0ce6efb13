#pragma once

#include "platform/linux/gtk/JudgedKeyEvents.h"
#include "ports/EventMonitors.h"

#include <gtkmm/window.h>
#include <map>
#include <memory>
#include <set>

namespace quillox {

/// Watches every window that is attached to it, ahead of all widgets in it, and the popups of those
/// windows, which take the keyboard over while they are open. The release of a key whose press was
/// swallowed is swallowed too, so that pages see presses and releases in pairs. A key that is down
/// when the keyboard goes elsewhere counts as released.
class EventMonitorsGtk final : public EventMonitors {
public:
    EventMonitorsGtk();
    ~EventMonitorsGtk() override;

    /// Until the window is destroyed.
    void attach(Gtk::Window&);

    Handle addLocalMonitor(EventMask, Handler) override;

    /// A handler that is asked before all monitors; what it swallows they do not see. There is one
    /// at a time. `isIndependentOfFocus`: every key comes to a window of ours, active or not.
    [[nodiscard]] Handle setTap(EventMask, Handler, bool isIndependentOfFocus);

    /// Reports every key that is down as released: what happens to it is not seen any more.
    void releaseKeys();

    /// Whether a key went down in one of the windows and has not come up.
    bool isKeyDown(KeyCode) const;

private:
    struct Monitor {
        EventMask mask;
        Handler handler;
    };

    void watch(GtkWidget*);
    void watchPopup(GtkWidget*);
    bool handle(GdkEvent*, GtkWidget* judge);
    bool judgeKey(GdkEvent*, GtkWidget* judge);
    bool handleKey(GdkEvent*, bool isPress);
    Event translateKey(GdkEvent*, bool isPress);
    Verdict ask(const Event&);
    Verdict askMonitors(const Event&);
    void handleActivation();

    using Monitors = std::map<unsigned, std::shared_ptr<const Monitor>>;
    std::shared_ptr<Monitors> m_monitors = std::make_shared<Monitors>();
    unsigned m_nextId = 0;
    std::shared_ptr<const Monitor> m_tap;
    bool m_isIndependentOfFocus = false;
    gulong m_popupHook = 0;
    std::set<unsigned> m_downKeys; ///< Hardware keycodes.
    std::set<unsigned> m_swallowedKeys; ///< Those whose release the windows must not see either.
    std::set<unsigned>
        m_commandKeys; ///< The Super keys that are down; the event state may not tell.
    JudgedKeyEvents m_judged;
};

} // namespace quillox
