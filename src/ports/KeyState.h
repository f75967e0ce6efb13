#pragma once

#include "ports/Event.h"

namespace quillox {

/// Whose keys are asked for. A platform that knows only one state answers both with it.
enum class KeyStateSource {
    CombinedSession, ///< As the session sees them, made-up events included.
    HidSystem, ///< As the keyboards themselves report them.
};

/// Which keys are down at this moment. Main thread only.
class KeyState {
public:
    virtual ~KeyState() = default;

    /// Where the system does not tell, the answer follows the events that this application was
    /// given; a key that was pressed elsewhere counts as up then.
    virtual bool isKeyDown(KeyStateSource, KeyCode) const = 0;
};

} // namespace quillox
