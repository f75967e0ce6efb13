#pragma once

#include "ports/SchemeHandler.h"

#include <map>
#include <memory>
#include <string>
#include <webkit/webkit.h>

namespace quillox {

/// Takes what pages ask of private schemes to whoever answers for them at present. An engine's
/// context takes each scheme only once and keeps it, while handlers come and go.
class SchemeHandlerWebKit {
public:
    using Handlers = std::map<std::string, std::shared_ptr<SchemeHandler>>;

    /// From now on these and no others answer, for as long as somebody else owns them.
    void serve(WebKitWebContext*, const Handlers&);

    /// Nobody answers any longer in the context so far; the next one that is served is another.
    void abandon();

private:
    void dismissHandlers();

    using Route = std::shared_ptr<std::weak_ptr<SchemeHandler>>;

    static Route registerScheme(WebKitWebContext*, const std::string& scheme);

    std::map<std::string, Route> m_routes; ///< Every scheme that the context has.
};

} // namespace quillox
