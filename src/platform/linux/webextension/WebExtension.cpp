// The engine loads this into the process of every page.

#include "platform/linux/system/GlibOwner.h"
#include "platform/linux/webextension/PingEcho.h"
#include "platform/linux/webextension/SiteSource.h"

#include <gmodule.h>
#include <gst/gst.h>
#include <string_view>
#include <webkit/webkit-web-process-extension.h>

namespace quillox {

namespace {

    void letPagesPlay(const char* siteFolder)
    {
        GError* failure = nullptr;
        const bool hasStarted = gst_init_check(nullptr, nullptr, &failure);
        const GErrorOwner error(failure);
        if (!hasStarted || !registerSiteSource(siteFolder))
            g_warning("Quillox: audio and video of the site do not play: %s",
                error ? error->message : "the source is refused");
    }

} // namespace

} // namespace quillox

/// `siteFolder` is the absolute path of the local site as a string, empty for any other site.
extern "C" G_MODULE_EXPORT void webkit_web_process_extension_initialize_with_user_data(
    WebKitWebProcessExtension* extension, GVariant* siteFolder) noexcept
{
    quillox::echoPings(extension);
    const auto* const path = g_variant_get_string(siteFolder, nullptr);
    if (!std::string_view(path).empty())
        quillox::letPagesPlay(path);
}
