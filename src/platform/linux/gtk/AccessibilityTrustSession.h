#pragma once

#include "ports/AccessibilityTrust.h"

namespace quillox {

/// X11 lets every client lock the keyboard. A Wayland compositor does when it lets windows switch
/// its shortcuts off, or has none; no session asks the user about it.
class AccessibilityTrustSession final : public AccessibilityTrust {
public:
    bool isProcessTrusted() const override;
    bool isProcessTrustedWithPrompt() override { return isProcessTrusted(); }
};

} // namespace quillox
