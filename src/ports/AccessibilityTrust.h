#pragma once

namespace quillox {

/// Whether this session lets the application lock the keyboard. Main thread only.
class AccessibilityTrust {
public:
    virtual ~AccessibilityTrust() = default;

    virtual bool isProcessTrusted() const = 0;

    /// The same, and where the session has a question of its own to ask the user for it, asks it.
    virtual bool isProcessTrustedWithPrompt() = 0;
};

} // namespace quillox
