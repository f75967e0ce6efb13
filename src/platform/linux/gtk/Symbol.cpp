#include "platform/linux/gtk/Symbol.h"

#include <algorithm>
#include <array>
#include <numbers>

namespace quillox {

namespace {

    using Context = Cairo::RefPtr<Cairo::Context>;

    /// The side of the square that the symbols are designed in. There, straight strokes fill whole
    /// pixels.
    constexpr double designSize = 18;
    constexpr double strokeWidth = 2;

    void chevronLeft(const Context& context)
    {
        context->move_to(12, 2);
        context->line_to(5, 9);
        context->line_to(12, 16);
    }

    void chevronRight(const Context& context)
    {
        context->move_to(6, 2);
        context->line_to(13, 9);
        context->line_to(6, 16);
    }

    void arrowClockwise(const Context& context)
    {
        constexpr double eighthTurn = std::numbers::pi / 4;
        context->arc(9, 9, 7, 0.4 * eighthTurn, 7 * eighthTurn);
        context->line_to(16, 6);
        context->move_to(16, 2);
        context->line_to(16, 6);
        context->line_to(12, 6);
    }

    void house(const Context& context)
    {
        context->move_to(1, 9);
        context->line_to(9, 2);
        context->line_to(17, 9);
        context->move_to(3, 8);
        context->line_to(3, 16);
        context->line_to(15, 16);
        context->line_to(15, 8);
        context->move_to(7, 16);
        context->line_to(7, 11);
        context->line_to(11, 11);
        context->line_to(11, 16);
    }

    struct Symbol {
        std::string_view name;
        void (*outline)(const Context&);
    };

    constexpr std::array symbols {
        Symbol { "chevron.left", chevronLeft },
        Symbol { "chevron.right", chevronRight },
        Symbol { "arrow.clockwise", arrowClockwise },
        Symbol { "house", house },
    };

} // namespace

void drawSymbol(const Context& context, std::string_view name, double size, Color color)
{
    const auto* symbol = std::ranges::find(symbols, name, &Symbol::name);
    if (symbol == symbols.end())
        return;
    context->save();
    context->scale(size / designSize, size / designSize);
    context->set_source_rgba(color.red, color.green, color.blue, color.alpha);
    context->set_line_width(strokeWidth);
    context->set_line_cap(Cairo::Context::LineCap::ROUND);
    context->set_line_join(Cairo::Context::LineJoin::ROUND);
    symbol->outline(context);
    context->stroke();
    context->restore();
}

} // namespace quillox
