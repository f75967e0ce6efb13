#pragma once

#include "config/KioskSettings.h"

#include <chrono>
#include <string>

namespace quillox {

class WebView;

/// Sends the page home when nobody uses it.
class IdleWatch {
public:
    virtual ~IdleWatch() = default;
    virtual void start(const KioskSettings&, const Url& home, WebView&) = 0;
    virtual void stop() = 0;
};

/// Counts the visitors' use of the run.
class UsageTracking {
public:
    virtual ~UsageTracking() = default;
    virtual void begin(const std::string& source, std::chrono::seconds sessionGap) = 0;
    virtual void end() = 0;
};

/// What joins a sealed run beside its windows, its page and its lock. What is absent is simply not
/// part of the run.
struct RunCollaborators {
    IdleWatch* idleWatch = nullptr;
    UsageTracking* usage = nullptr;
};

} // namespace quillox
