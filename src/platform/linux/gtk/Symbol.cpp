#include "platform/linux/gtk/Symbol.h"

#include "platform/linux/gtk/WidgetStyle.h"
#include "platform/linux/system/GlibOwner.h"

#include <fmt/format.h>
#include <gio/gio.h>
#include <glibmm/bytes.h>
#include <librsvg/rsvg.h>
#include <map>
#include <optional>
#include <string>

namespace quillox {

namespace {

    constexpr auto folder = "/com/orvendal/quillox/";
    constexpr auto logoName = "QUILLOX-LOGO-PULL-TAB";

    /// A drawing that takes the colour of the text around it.
    class Drawing final {
    public:
        explicit Drawing(const std::string& path);

        double aspectRatio() const; ///< Width by height.
        void draw(cairo_t*, double width, double height, Color);

    private:
        void dye(Color);

        GObjectOwner<RsvgHandle> m_handle; ///< None when there is no such drawing.
        std::optional<Color> m_color;
    };

    Drawing::Drawing(const std::string& path)
    {
        const auto data = Glib::wrap(
            g_resources_lookup_data(path.c_str(), G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr));
        if (!data)
            return;
        gsize size = 0;
        const auto* bytes = static_cast<const guint8*>(data->get_data(size));
        m_handle.reset(rsvg_handle_new_from_data(bytes, size, nullptr));
    }

    double Drawing::aspectRatio() const
    {
        double width = 1;
        double height = 1;
        if (m_handle)
            rsvg_handle_get_intrinsic_size_in_pixels(m_handle.get(), &width, &height);
        return width / height;
    }

    void Drawing::dye(Color color)
    {
        if (m_color == color)
            return;
        m_color = color;
        const auto style = fmt::format("svg {{ color: {}; }}", cssColor(color));
        rsvg_handle_set_stylesheet(
            m_handle.get(), reinterpret_cast<const guint8*>(style.data()), style.size(), nullptr);
    }

    void Drawing::draw(cairo_t* context, double width, double height, Color color)
    {
        if (!m_handle)
            return;
        dye(color);
        const RsvgRectangle place { 0, 0, width, height };
        rsvg_handle_render_document(m_handle.get(), context, &place, nullptr);
    }

    /// Each is read once, and kept for as long as the program runs.
    Drawing& drawing(const std::string& name)
    {
        static std::map<std::string, Drawing, std::less<>> drawings;
        const auto found = drawings.find(name);
        return found != drawings.end() ? found->second
                                       : drawings.emplace(name, folder + name).first->second;
    }

} // namespace

void drawSymbol(
    const Cairo::RefPtr<Cairo::Context>& context, std::string_view name, double size, Color color)
{
    drawing(fmt::format("symbols/{}.svg", name)).draw(context->cobj(), size, size, color);
}

void drawLogo(const Cairo::RefPtr<Cairo::Context>& context, double height, Color color)
{
    drawing(logoName).draw(context->cobj(), logoWidth(height), height, color);
}

double logoWidth(double height)
{
    return height * drawing(logoName).aspectRatio();
}

} // namespace quillox
