#pragma once

#include "config/KioskSettings.h"
#include "ports/View.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace quillox {

class WebView;

/// The keyboard lock of a sealed run, with the gesture that ends it.
class KeyLock {
public:
    virtual ~KeyLock() = default;
    virtual void setOnExitCombo(std::function<void()>) = 0;
    /// Progress of the hold, 0 to 1.
    virtual void setOnHoldProgress(std::function<void(double)>) = 0;
    /// Whether the lock took hold; true also when it already had.
    virtual bool start() = 0;
    virtual void stop() = 0;
    virtual bool isRunning() const = 0;
};

/// Keeps shortcuts away that no keyboard lock can stop.
class HotKeyGuard {
public:
    virtual ~HotKeyGuard() = default;
    virtual void disable() = 0;
    virtual void restore() = 0;
};

/// Keeps the display awake. Starting twice and stopping twice are harmless.
class SleepGuard {
public:
    virtual ~SleepGuard() = default;
    virtual void start() = 0;
    virtual void stop() = 0;
};

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

/// Shows how far the exit gesture is.
class HoldFeedback {
public:
    virtual ~HoldFeedback() = default;
    virtual void setProgress(double) = 0;
    virtual std::unique_ptr<View> makeIndicator() = 0;
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

/// Asks for the exit password.
class ExitPrompts {
public:
    struct Request {
        std::string title;
        std::string subtitle;
        std::function<bool(const std::string& text)> verify;
        std::function<void()> onSuccess;
        std::function<void()> onCancel;
    };

    virtual ~ExitPrompts() = default;
    virtual std::unique_ptr<View> makePrompt(Request) = 0;
};

/// What joins a sealed run beside its windows and its page. What is absent is simply not part of
/// the run.
struct RunCollaborators {
    KeyLock* keyLock = nullptr;
    HotKeyGuard* hotKeys = nullptr;
    SleepGuard* sleep = nullptr;
    IdleWatch* idleWatch = nullptr;
    UsageTracking* usage = nullptr;
    Connectivity* connectivity = nullptr;
    HoldFeedback* holdFeedback = nullptr;
    NavigationAids* navigationAids = nullptr;
    ExitPrompts* exitPrompts = nullptr;
};

} // namespace quillox
