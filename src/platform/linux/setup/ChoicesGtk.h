#pragma once

#include <cstdint>
#include <functional>
#include <giomm/simpleaction.h>
#include <gtkmm/checkbutton.h>
#include <gtkmm/menubutton.h>
#include <string>
#include <utility>
#include <vector>

namespace quillox {

/// Buttons of which one is chosen.
template <typename Value> class RadioGroupGtk final {
public:
    using OnChoose = std::function<void(Value)>;

    explicit RadioGroupGtk(OnChoose onChoose)
        : m_onChoose(std::move(onChoose))
    {
    }

    void add(Gtk::CheckButton& button, Value value)
    {
        if (!m_buttons.empty())
            button.set_group(*m_buttons.front().first);
        m_buttons.emplace_back(&button, value);
        button.signal_toggled().connect([this, &button, value] {
            if (button.get_active())
                m_onChoose(value);
        });
    }

    void update(Value chosen)
    {
        for (auto& [button, value] : m_buttons) {
            if (value == chosen)
                button->set_active(true);
        }
    }

private:
    OnChoose m_onChoose;
    std::vector<std::pair<Gtk::CheckButton*, Value>> m_buttons;
};

/// A button that opens a menu, one item of which is chosen. It has a title of its own.
class ChoiceMenuGtk final {
public:
    using Item = std::pair<std::string, std::int64_t>;
    using Items = std::vector<Item>;

    ChoiceMenuGtk(Gtk::MenuButton&, std::function<void(std::int64_t)> onChoose);

    void update(const std::string& title, Items, std::int64_t chosen);

private:
    void fillIn();

    Gtk::MenuButton& m_button;
    Glib::RefPtr<Gio::SimpleAction> m_action;
    Items m_items;
    bool m_isFilledIn = false; ///< The menu is made when it is first opened.
};

} // namespace quillox
