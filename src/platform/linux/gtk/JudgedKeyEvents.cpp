#include "platform/linux/gtk/JudgedKeyEvents.h"

#include <cstdint>
#include <gdk/x11/gdkx.h>

namespace quillox {

bool JudgedKeyEvents::isForgotten(GdkEvent* event) const
{
    if (m_events.size() < capacity || !GDK_IS_X11_DISPLAY(gdk_event_get_display(event)))
        return false;
    // The clock starts anew every 49 days.
    const auto age = gdk_event_get_time(m_events.front().get()) - gdk_event_get_time(event);
    return static_cast<std::int32_t>(age) > 0;
}

} // namespace quillox
