#pragma once

#include "platform/linux/system/FileDescriptor.h"

#include <optional>

namespace quillox {

/// A socket that becomes readable whenever a link, an address or a route of this machine changes.
/// Empty where the kernel does not tell.
FileDescriptor openRouteNews();

/// Takes everything off the socket. What it says is of no use: it may have lost some of it.
void discardRouteNews(const FileDescriptor&);

/// Whether a route leads to other machines over a link that is up and has a carrier. A network
/// without a gateway counts; addresses that a machine gives itself on any cable do not. None when
/// the kernel does not tell. Any thread.
std::optional<bool> hasWorkingRoute();

} // namespace quillox
