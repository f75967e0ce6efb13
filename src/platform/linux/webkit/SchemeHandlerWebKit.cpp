#include "platform/linux/webkit/SchemeHandlerWebKit.h"

#include "platform/linux/webkit/SliceStream.h"

#include <libsoup/soup.h>

namespace quillox {

namespace {

    SchemeRequest describe(WebKitURISchemeRequest* request)
    {
        const auto* address = webkit_uri_scheme_request_get_uri(request);
        auto* headers = webkit_uri_scheme_request_get_http_headers(request);
        const auto* range = headers ? soup_message_headers_get_one(headers, "Range") : nullptr;
        return { .url = address ? address : "",
            .range = range ? std::optional<std::string>(range) : std::nullopt };
    }

    void finish(WebKitURISchemeRequest* request, const SchemeResponse& response)
    {
        const auto stream
            = makeSliceStream(response, webkit_uri_scheme_request_get_web_view(request));
        const GObjectOwner<WebKitURISchemeResponse> answer(
            webkit_uri_scheme_response_new(stream.get(), static_cast<gint64>(response.length)));
        webkit_uri_scheme_response_set_status(answer.get(), response.status, nullptr);
        auto* headers = soup_message_headers_new(SOUP_MESSAGE_HEADERS_RESPONSE);
        for (const auto& [name, value] : response.headers) {
            soup_message_headers_append(headers, name.c_str(), value.c_str());
            // The engine takes a page's type from here alone, and shows scripts that of the header.
            if (name == "Content-Type")
                webkit_uri_scheme_response_set_content_type(answer.get(), value.c_str());
        }
        webkit_uri_scheme_response_set_http_headers(answer.get(), headers);
        webkit_uri_scheme_request_finish_with_response(request, answer.get());
    }

    void answer(WebKitURISchemeRequest* request, gpointer route)
    {
        const auto handler
            = (*static_cast<std::shared_ptr<std::weak_ptr<SchemeHandler>>*>(route))->lock();
        if (!handler)
            return finish(request, SchemeResponse {});
        if (const auto response = handler->answer(describe(request)))
            return finish(request, *response);
        const GErrorOwner error(g_error_new_literal(G_URI_ERROR, G_URI_ERROR_FAILED, "bad URL"));
        webkit_uri_scheme_request_finish_error(request, error.get());
    }

} // namespace

void SchemeHandlerWebKit::serve(WebKitWebContext* context, const Handlers& handlers)
{
    dismissHandlers();
    for (const auto& [scheme, handler] : handlers) {
        auto& route = m_routes[scheme];
        if (!route)
            route = registerScheme(context, scheme);
        *route = handler;
    }
}

void SchemeHandlerWebKit::abandon()
{
    dismissHandlers();
    m_routes.clear();
}

void SchemeHandlerWebKit::dismissHandlers()
{
    for (const auto& [scheme, route] : m_routes)
        route->reset();
}

SchemeHandlerWebKit::Route SchemeHandlerWebKit::registerScheme(
    WebKitWebContext* context, const std::string& scheme)
{
    auto route = std::make_shared<std::weak_ptr<SchemeHandler>>();
    // The context may outlive this object, in a view that is still going.
    webkit_web_context_register_uri_scheme(context, scheme.c_str(), answer, new Route(route),
        [](gpointer data) { delete static_cast<Route*>(data); });
    auto* security = webkit_web_context_get_security_manager(context);
    // Without isolation any page on the web could look into the folder.
    webkit_security_manager_register_uri_scheme_as_display_isolated(security, scheme.c_str());
    webkit_security_manager_register_uri_scheme_as_secure(security, scheme.c_str());
    webkit_security_manager_register_uri_scheme_as_cors_enabled(security, scheme.c_str());
    return route;
}

} // namespace quillox
