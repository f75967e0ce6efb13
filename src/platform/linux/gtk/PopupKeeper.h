#pragma once

#include <gtk/gtk.h>

namespace quillox {

/// Closes popups that would keep all input to themselves for good: one whose owner took it out of
/// its window while it was open, as the engine does with the date picker of a page that goes, and
/// one of a widget that may not have the keyboard. Main thread only.
class PopupKeeper {
public:
    PopupKeeper();
    ~PopupKeeper();
    PopupKeeper(const PopupKeeper&) = delete;
    PopupKeeper& operator=(const PopupKeeper&) = delete;

private:
    gulong m_hook;
};

} // namespace quillox
