#pragma once

#include "platform/linux/system/GlibOwner.h"

#include <chrono>
#include <functional>
#include <gio/gio.h>
#include <string>

namespace quillox {

struct BusAnswer {
    GVariantOwner value; ///< None when the call failed; then the rest tells why.
    std::string errorName; ///< As the other side names it; empty when it did not answer.
    std::string reason; ///< For a log, without a full stop.
};

struct BusObject {
    const char* service; ///< Null for a connection to one peer.
    const char* path;
    const char* interface;
};

/// Calls a method without starting its service, unless `startsService`; takes over `arguments` if
/// they are floating. The answer comes later, on this thread's default context, and not at all once
/// `cancellable` was cancelled. Strings are copied.
void callBus(GDBusConnection*, const BusObject&, const char* method, GVariant* arguments,
    std::chrono::milliseconds patience, GCancellable*, std::function<void(BusAnswer)>,
    bool startsService = false);

/// What an error says, without the name of its kind.
std::string reasonOf(const GError*);

} // namespace quillox
