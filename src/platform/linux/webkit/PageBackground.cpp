#include "platform/linux/webkit/PageBackground.h"

#include <utility>
#include <vector>

namespace quillox {

namespace {

    constexpr auto world = "quillox";

    /// The body's colour, or the whole document's where the body has none.
    constexpr auto script = R"((() => {
  for (const element of [document.body, document.documentElement]) {
    const color = element ? getComputedStyle(element).backgroundColor : ""
    if (color && color !== "transparent" && !/[,/] *0\)$/.test(color)) return color
  }
  return ""
})())";

    /// A colour that lets something shine through does so in front of white.
    Color overWhite(const GdkRGBA& color)
    {
        const auto mixed = [&](double component) {
            return component * color.alpha + (1.0 - static_cast<double>(color.alpha));
        };
        return { mixed(color.red), mixed(color.green), mixed(color.blue), 1 };
    }

    std::optional<Color> colorOf(JSCValue* value)
    {
        const GTextOwner text(jsc_value_to_string(value));
        GdkRGBA color {};
        if (!gdk_rgba_parse(&color, text.get()))
            return std::nullopt;
        return overWhite(color);
    }

    /// What the page shows at the middle of its upper edge.
    Color topColor(GdkTexture* picture)
    {
        const auto width = static_cast<std::size_t>(gdk_texture_get_width(picture));
        const auto height = static_cast<std::size_t>(gdk_texture_get_height(picture));
        std::vector<guchar> pixels(width * height * 4);
        gdk_texture_download(picture, pixels.data(), width * 4);
        const auto* pixel = &pixels[width / 2 * 4];
        const auto component = [pixel](int index) { return pixel[index] / 255.0; };
        return { component(2), component(1), component(0), 1 };
    }

} // namespace

void PageBackground::read(Callback callback)
{
    cancel();
    m_callback = std::move(callback);
    m_cancellable.reset(g_cancellable_new());
    askStyle();
}

void PageBackground::cancel()
{
    if (m_cancellable)
        g_cancellable_cancel(m_cancellable.get());
    m_cancellable.reset();
}

void PageBackground::askStyle()
{
    webkit_web_view_evaluate_javascript(
        m_view, script, -1, world, nullptr, m_cancellable.get(),
        [](GObject* view, GAsyncResult* result, gpointer self) {
            GError* failure = nullptr;
            const GObjectOwner<JSCValue> value(webkit_web_view_evaluate_javascript_finish(
                WEBKIT_WEB_VIEW(view), result, &failure));
            const GErrorOwner error(failure);
            if (g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED))
                return;
            auto& reader = *static_cast<PageBackground*>(self);
            if (!value)
                return reader.finish(std::nullopt);
            if (const auto color = colorOf(value.get()))
                return reader.finish(color);
            // Colours by other names, pictures, and what the engine itself chose.
            reader.takePicture();
        },
        this);
}

void PageBackground::takePicture()
{
    webkit_web_view_get_snapshot(
        m_view, WEBKIT_SNAPSHOT_REGION_VISIBLE, WEBKIT_SNAPSHOT_OPTIONS_NONE, m_cancellable.get(),
        [](GObject* view, GAsyncResult* result, gpointer self) {
            GError* failure = nullptr;
            const GObjectOwner<GdkTexture> picture(
                webkit_web_view_get_snapshot_finish(WEBKIT_WEB_VIEW(view), result, &failure));
            const GErrorOwner error(failure);
            if (g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED))
                return;
            auto& reader = *static_cast<PageBackground*>(self);
            reader.finish(picture ? std::optional(topColor(picture.get())) : std::nullopt);
        },
        this);
}

void PageBackground::finish(std::optional<Color> color)
{
    if (const auto callback = std::exchange(m_callback, nullptr))
        callback(color);
}

} // namespace quillox
