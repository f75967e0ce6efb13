#pragma once

#include "platform/linux/lock/Restoration.h"
#include "platform/linux/system/GlibOwner.h"

#include <gio/gio.h>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quillox {

/// Whether `desktops`, in the form of XDG_CURRENT_DESKTOP, names one.
bool namesDesktop(std::string_view desktops, std::string_view desktop);

/// The settings by which GNOME and desktops built on it bind keys to what shows over the screen or
/// leaves it. Settings that are not installed, and those that the user may not change, are passed
/// over. Nothing waits for the disk or the settings' service. Main thread only.
class DesktopShortcuts {
public:
    /// `desktops` as in XDG_CURRENT_DESKTOP: the settings matter to some only.
    explicit DesktopShortcuts(std::string_view desktops);

    /// Whether this desktop has any of the settings. Does not change.
    bool isAvailable() const { return m_isAvailable; }

    /// The settings that belong to a symbolic hot key and are not off, as they are now.
    std::vector<TakenSetting> find(std::int32_t number);

    void switchOff(const TakenSetting&);

    /// Nothing happens for a setting that is none of ours, or with a value that it cannot have.
    void putBack(const TakenSetting&);

private:
    GSettings* settings(const std::string& schema);

    bool m_isAvailable = false;
    std::map<std::string, GObjectOwner<GSettings>, std::less<>> m_settings;
};

} // namespace quillox
