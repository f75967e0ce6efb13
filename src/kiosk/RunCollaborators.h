#pragma once

#include "config/KioskSettings.h"
#include "ports/View.h"

#include <chrono>
#include <memory>
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

/// Watches the network and covers the page with a notice while it is down.
class Connectivity {
public:
    virtual ~Connectivity() = default;
    /// Starts out hidden.
    virtual std::unique_ptr<View> makeOfflineNotice() = 0;
    virtual void startNetworkMonitor(WebView&) = 0;
    virtual void stopNetworkMonitor() = 0;
};

/// The buttons over the page and the band under a camera housing.
class NavigationAids {
public:
    virtual ~NavigationAids() = default;
    virtual std::unique_ptr<View> makeNotchBar(const KioskSettings&, WebView&) = 0;
    /// Puts the bar into the container; none when the settings want no button. `topInset` is what
    /// the page already leaves free at the top, `notchTop` the height of the housing; both in
    /// points.
    virtual std::unique_ptr<View> installNavBar(
        const KioskSettings&, Container&, WebView&, double topInset, double notchTop)
        = 0;
};

/// What joins a sealed run beside its windows, its page and its lock. What is absent is simply not
/// part of the run.
struct RunCollaborators {
    IdleWatch* idleWatch = nullptr;
    UsageTracking* usage = nullptr;
    Connectivity* connectivity = nullptr;
    NavigationAids* navigationAids = nullptr;
};

} // namespace quillox
