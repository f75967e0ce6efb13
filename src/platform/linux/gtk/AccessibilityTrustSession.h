#pragma once

#include "ports/AccessibilityTrust.h"

namespace quillox {

/// X11 lets every client lock the keyboard, unless a Wayland compositor sees the keys first. Such a
/// compositor does when it lets windows switch its shortcuts off, or has none.
class AccessibilityTrustSession final : public AccessibilityTrust {
public:
    bool isProcessTrusted() const override;
    bool isProcessTrustedWithPrompt() override { return isProcessTrusted(); }
};

} // namespace quillox
