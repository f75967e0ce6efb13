#pragma once

#include <functional>
#include <string_view>

namespace quillox {

/// One way of keeping the session's keys from everybody else. What it says about itself was
/// verified, not just asked for. Main thread only.
class KeyboardLayer {
public:
    virtual ~KeyboardLayer() = default;

    /// For the log, for example "X11 keyboard grab".
    virtual std::string_view name() const = 0;

    /// Takes hold, and from now on tries to keep it: what is lost is taken again as soon as that is
    /// possible. Whether it holds now. Harmless when engaged.
    virtual bool engage() = 0;

    /// Lets go. Harmless when not engaged.
    virtual void release() = 0;

    virtual bool isHeld() const = 0;

    /// Whether, while it is held, every key comes to our windows whichever window has the focus.
    virtual bool isIndependentOfFocus() const = 0;

    /// Called when `isHeld` has changed while engaged, by itself and not by `engage`.
    std::function<void()> onChange;
};

} // namespace quillox
