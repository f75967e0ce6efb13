#pragma once

#include "platform/linux/gtk/SymbolGtk.h"
#include "platform/linux/setup/CaptionGtk.h"
#include "platform/linux/setup/TextBoxGtk.h"
#include "ui/OperatorForm.h"

#include <gtkmm/builder.h>
#include <gtkmm/button.h>
#include <string>
#include <vector>

namespace quillox {

/// The source of the operator screen: an address, or a folder in its place.
class OperatorSourceGtk final {
public:
    OperatorSourceGtk(const Glib::RefPtr<Gtk::Builder>&, OperatorForm&, RunLoop&);

    void update();

    /// Takes the keyboard to what can be changed: the address, or the button in its place.
    void focus();

private:
    OperatorForm& m_form;
    Gtk::Widget& m_urlRow;
    Gtk::Widget& m_folderRow;
    Gtk::Label& m_folderTitle;
    Gtk::Label& m_warning;
    Gtk::Button& m_clear;
    SymbolGtk m_folderSymbol;
    TextBoxGtk m_url;
};

/// The further domains: a field for the next one, and a row for each of them.
class OperatorDomainsGtk final {
public:
    OperatorDomainsGtk(const Glib::RefPtr<Gtk::Builder>&, OperatorForm&, RunLoop&);

    void update();

private:
    void makeRows();
    void remove(std::size_t index);

    OperatorForm& m_form;
    Gtk::Box& m_rows;
    CaptionGtk m_caption;
    TextBoxGtk m_draft;
    std::vector<std::string> m_shown;
    std::vector<Gtk::Button*> m_removers;
};

} // namespace quillox
