#pragma once

#include "support/Handle.h"

#include <functional>
#include <string>
#include <vector>

namespace quillox {

class AppState;

/// The plain setup screen: what to show, and the control that seals. Main thread only.
class SetupView {
public:
    explicit SetupView(AppState& state)
        : m_state(state)
    {
    }

    static constexpr auto heading = "QUILLOX";
    static constexpr auto help = "Show one website on this display, and nothing else.";
    static constexpr auto addressLabel = "WEBSITE ADDRESS";
    static constexpr auto folderLabel = "WEBSITE FOLDER";
    static constexpr auto chooseTitle = "Choose a _folder or HTML file…";
    static constexpr auto clearTitle = "Use an _address instead";
    static constexpr auto sealName = "Seal this display";
    static constexpr auto exitHelp = "To leave the sealed page, hold Super, Shift and S.";

    /// Whether the source is a folder; the address is not used then.
    bool isLocal() const;
    const std::string& address() const;
    /// Folder and entry page of a local source.
    std::string folder() const;

    bool canSeal() const;
    /// What the sealing control says: its purpose, or what is missing first. An underscore precedes
    /// its mnemonic.
    std::string sealTitle() const;
    /// Not while a run hides the screen: what is typed then is not meant for it.
    bool isEnabled() const;

    /// Each change is stored at once.
    void setAddress(const std::string& address);
    void chooseSource();
    void clearLocalSource();
    void seal();

    /// Calls back after anything that is shown has changed.
    [[nodiscard]] std::vector<Handle> observe(const std::function<void()>& onChange);

private:
    bool isPasswordMissing() const;

    AppState& m_state;
};

} // namespace quillox
