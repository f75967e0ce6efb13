#pragma once

#include "ports/RunLoop.h"
#include "usage/UsageRecords.h"

#include <iosfwd>
#include <optional>
#include <string_view>

namespace quillox {

/// What the file of the statistics holds.
struct Usage {
    UsageRecords days;
    std::optional<RunLoop::WallTime> lastUsed;
};

/// Writes a JSON object with "days", a list of records, and "lastUsed", in seconds since the
/// beginning of 2001 UTC. Any thread.
void encodeUsage(const Usage&, std::ostream&);

/// None when `json` is no JSON object with a list of days. Otherwise forgiving: a record without
/// day or site is left out, a number that is missing, negative or beyond all reason counts as 0, a
/// list of hours is filled up or cut to 24.
std::optional<Usage> decodeUsage(std::string_view json);

} // namespace quillox
