#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quillox {

struct Alert {
    enum class Style { Informational, Warning };
    Style style = Style::Informational;
    std::string message;
    std::string informativeText;
    std::vector<std::string>
        buttons; ///< The first is the default one, the last the one that Escape presses.

    bool operator==(const Alert&) const = default;
};

struct OpenPanel {
    bool canChooseDirectories = false;
    bool canChooseFiles = false;
    bool allowsMultipleSelection = false;
    std::vector<std::string> contentTypes; ///< MIME types of the files that may be chosen.
    std::string prompt; ///< The title of the button that accepts.
    std::string message;

    bool operator==(const OpenPanel&) const = default;
};

/// Modal dialogs of the setup screens. The call returns at once; the answer comes on the main
/// thread, once, and input to the other windows of the application waits until then.
class Dialogs {
public:
    virtual ~Dialogs() = default;

    /// `onButton` gets the index of the button that was pressed.
    virtual void present(const Alert&, std::function<void(std::size_t)> onButton) = 0;

    /// `onChosen` gets the absolute path of the choice, none when the panel was cancelled.
    virtual void present(const OpenPanel&, std::function<void(std::optional<std::string>)> onChosen)
        = 0;
};

} // namespace quillox
