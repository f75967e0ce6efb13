// The engine loads this into the process of every page of a local site.

#include "platform/linux/system/GlibOwner.h"
#include "platform/linux/webextension/SiteSource.h"

#include <gmodule.h>
#include <gst/gst.h>
#include <webkit/webkit-web-process-extension.h>

/// `siteFolder` is the absolute path of the site as a string.
extern "C" G_MODULE_EXPORT void webkit_web_process_extension_initialize_with_user_data(
    WebKitWebProcessExtension*, GVariant* siteFolder) noexcept
{
    GError* failure = nullptr;
    const bool hasStarted = gst_init_check(nullptr, nullptr, &failure);
    const quillox::GErrorOwner error(failure);
    if (!hasStarted || !quillox::registerSiteSource(g_variant_get_string(siteFolder, nullptr)))
        g_warning("Quillox: audio and video of the site do not play: %s",
            error ? error->message : "the source is refused");
}
