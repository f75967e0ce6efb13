#pragma once

#include <string>

namespace quillox {

/// Why a page did not come.
struct LoadError {
    enum class Domain {
        UrlLoading, ///< Between this machine and the server; the codes below.
        Engine, ///< The engine would not show it: a navigation that was refused, a type it cannot
                ///< show, an address that it cannot read.
    };

    Domain domain = Domain::UrlLoading;
    int code = 0;
    std::string description; ///< For the system log; English.

    bool operator==(const LoadError&) const = default;
};

/// The codes of `LoadError::Domain::UrlLoading`.
namespace urlErrors {
    constexpr int unknown = -1;
    constexpr int cancelled = -999; ///< Superseded by another load, or stopped on request.
    constexpr int badURL = -1000;
    constexpr int timedOut = -1001;
    constexpr int cannotFindHost = -1003;
    constexpr int cannotConnectToHost = -1004;
    constexpr int networkConnectionLost = -1005;
    constexpr int httpTooManyRedirects = -1007;
    constexpr int notConnectedToInternet = -1009;
    constexpr int badServerResponse = -1011;
    constexpr int secureConnectionFailed = -1200;
} // namespace urlErrors

/// Whether an answer with this HTTP status is none: the server has failed, for the page itself.
constexpr bool isServerError(unsigned status)
{
    return status >= 500;
}

} // namespace quillox
