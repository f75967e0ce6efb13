#pragma once

#include <string>

namespace quillox {

/// The session's way of opening things. Main thread only.
class Workspace {
public:
    virtual ~Workspace() = default;

    /// Opens an address with whatever the user prefers for it. What nothing can open is logged.
    virtual void open(const std::string& url) = 0;

    /// Starts a new instance of the application and ends this one as soon as the new one is on its
    /// way.
    virtual void relaunch() = 0;
};

} // namespace quillox
