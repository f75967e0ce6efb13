#include "platform/linux/setup/ChoicesGtk.h"

#include <giomm/menu.h>
#include <giomm/simpleactiongroup.h>
#include <gtkmm/popover.h>
#include <utility>

namespace quillox {

namespace {

    using Number = Glib::Variant<gint64>;

    constexpr auto group = "menu";
    constexpr auto action = "choose";

} // namespace

ChoiceMenuGtk::ChoiceMenuGtk(Gtk::MenuButton& button, std::function<void(std::int64_t)> onChoose)
    : m_button(button)
    , m_action(Gio::SimpleAction::create(action, Number::variant_type(), Number::create(0)))
{
    m_action->signal_activate().connect(
        [onChoose = std::move(onChoose)](const Glib::VariantBase& value) {
            onChoose(Glib::VariantBase::cast_dynamic<Number>(value).get());
        });
    auto actions = Gio::SimpleActionGroup::create();
    actions->add_action(m_action);
    m_button.insert_action_group(group, actions);
    m_button.set_create_popup_func([this] { fillIn(); });
}

void ChoiceMenuGtk::update(const std::string& title, Items items, std::int64_t chosen)
{
    m_action->set_state(Number::create(chosen));
    if (m_button.get_label().raw() != title)
        m_button.set_label(title);
    if (items == m_items)
        return;
    m_items = std::move(items);
    m_isFilledIn = false;
    const auto* open = m_button.get_popover();
    if (open && open->get_visible())
        fillIn();
}

void ChoiceMenuGtk::fillIn()
{
    if (std::exchange(m_isFilledIn, true))
        return;
    auto menu = Gio::Menu::create();
    for (const auto& [label, value] : m_items) {
        auto item = Gio::MenuItem::create(label, "");
        item->set_action_and_target(std::string(group) + "." + action, Number::create(value));
        menu->append_item(item);
    }
    m_button.set_menu_model(menu);
    // A flat list, which ends where the button does. Without a compositor a shadow would be black.
    m_button.get_popover()->set_has_arrow(false);
    m_button.get_popover()->set_halign(Gtk::Align::END);
}

} // namespace quillox
