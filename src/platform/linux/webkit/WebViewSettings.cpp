#include "platform/linux/webkit/WebViewSettings.h"

#include <array>
#include <memory>
#include <string_view>

namespace quillox {

namespace {

    /// By the engine's names; one that a version of it does not know is not there to be closed.
    constexpr std::array<std::string_view, 3> unwantedFeatures {
        "MediaControlsContextMenus",
        "PDFJSViewer", // Its toolbar prints and saves.
        "ScreenCapture",
    };

    struct FeatureListUnref {
        void operator()(WebKitFeatureList* list) const { webkit_feature_list_unref(list); }
    };

    void disableFeatures(WebKitSettings* settings)
    {
        const std::unique_ptr<WebKitFeatureList, FeatureListUnref> features(
            webkit_settings_get_all_features());
        for (gsize index = 0; index < webkit_feature_list_get_length(features.get()); ++index) {
            auto* feature = webkit_feature_list_get(features.get(), index);
            for (const auto unwanted : unwantedFeatures) {
                if (webkit_feature_get_identifier(feature) == unwanted)
                    webkit_settings_set_feature_enabled(settings, feature, FALSE);
            }
        }
    }

} // namespace

void restrictSettings(WebKitSettings* settings)
{
    webkit_settings_set_enable_developer_extras(settings, FALSE);
    // An element would fill the view whatever the request for it is answered.
    webkit_settings_set_enable_fullscreen(settings, FALSE);
    webkit_settings_set_enable_media_stream(settings, FALSE);
    webkit_settings_set_enable_webrtc(settings, FALSE);
    webkit_settings_set_allow_modal_dialogs(settings, FALSE);
    webkit_settings_set_javascript_can_access_clipboard(settings, FALSE);
    webkit_settings_set_enable_caret_browsing(settings, FALSE);
    // Otherwise the engine itself drops windows that nobody clicked for, before they are judged.
    webkit_settings_set_javascript_can_open_windows_automatically(settings, TRUE);
    disableFeatures(settings);
}

} // namespace quillox
