#include "platform/linux/webkit/LoadErrorsWebKit.h"

#include <algorithm>
#include <array>
#include <gio/gio.h>
#include <optional>
#include <string_view>
#include <webkit/webkit.h>

namespace quillox {

namespace {

    using Domain = LoadError::Domain;

    struct Row {
        std::string_view domain; ///< The name of the error's quark.
        std::optional<int> engineCode; ///< None stands for all that remain.
        Domain translatedDomain;
        int code;
    };

    constexpr std::string_view resolver = "g-resolver-error-quark";
    constexpr std::string_view io = "g-io-error-quark";
    constexpr std::string_view tls = "g-tls-error-quark";
    constexpr std::string_view network = "WebKitNetworkError";

    /// First match wins.
    constexpr std::array rows {
        Row { network, WEBKIT_NETWORK_ERROR_CANCELLED, Domain::UrlLoading, urlErrors::cancelled },
        Row { network, WEBKIT_NETWORK_ERROR_UNKNOWN_PROTOCOL, Domain::Engine,
            WEBKIT_NETWORK_ERROR_UNKNOWN_PROTOCOL },
        Row { "WebKitPolicyError", WEBKIT_POLICY_ERROR_CANNOT_USE_RESTRICTED_PORT,
            Domain::UrlLoading, urlErrors::badServerResponse },
        Row { "WebKitPolicyError", {}, Domain::Engine, 0 },
        Row { "WebKitMediaError", {}, Domain::Engine, 0 },
        Row { resolver, {}, Domain::UrlLoading, urlErrors::cannotFindHost },
        Row { tls, {}, Domain::UrlLoading, urlErrors::secureConnectionFailed },
        // The engine gives up a connection that is not accepted, and calls that cancelled, too.
        Row { io, G_IO_ERROR_CANCELLED, Domain::UrlLoading, urlErrors::timedOut },
        Row { io, G_IO_ERROR_TIMED_OUT, Domain::UrlLoading, urlErrors::timedOut },
        Row {
            io, G_IO_ERROR_CONNECTION_REFUSED, Domain::UrlLoading, urlErrors::cannotConnectToHost },
        Row { io, G_IO_ERROR_HOST_UNREACHABLE, Domain::UrlLoading, urlErrors::cannotConnectToHost },
        Row { io, G_IO_ERROR_HOST_NOT_FOUND, Domain::UrlLoading, urlErrors::cannotFindHost },
        Row { io, G_IO_ERROR_NETWORK_UNREACHABLE, Domain::UrlLoading,
            urlErrors::notConnectedToInternet },
        Row { io, {}, Domain::UrlLoading, urlErrors::networkConnectionLost },
        Row { "soup-session-error-quark", {}, Domain::UrlLoading, urlErrors::badServerResponse },
        // Its network process died.
        Row { "WebKitErrorDomain", 300, Domain::UrlLoading, urlErrors::networkConnectionLost },
        // Too many redirects come without any domain.
        Row { "", {}, Domain::UrlLoading, urlErrors::httpTooManyRedirects },
    };

} // namespace

LoadError translateLoadError(const GError& error)
{
    const auto* name = g_quark_to_string(error.domain);
    const std::string_view domain = name ? name : "";
    const auto* const row = std::ranges::find_if(rows, [&](const Row& candidate) {
        return candidate.domain == domain
            && candidate.engineCode.value_or(error.code) == error.code;
    });
    const std::string description = error.message ? error.message : "";
    if (row == rows.end())
        return { Domain::UrlLoading, urlErrors::unknown, description };
    const bool keepsCode = row->translatedDomain == Domain::Engine;
    return { row->translatedDomain, keepsCode ? error.code : row->code, description };
}

} // namespace quillox
