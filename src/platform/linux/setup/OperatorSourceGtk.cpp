#include "platform/linux/setup/OperatorSourceGtk.h"

#include "platform/linux/setup/AccessibleGtk.h"
#include "platform/linux/setup/SymbolButtonGtk.h"

#include <algorithm>

namespace quillox {

namespace {

    constexpr double folderSymbolSize = 20;

} // namespace

OperatorSourceGtk::OperatorSourceGtk(
    const Glib::RefPtr<Gtk::Builder>& builder, OperatorForm& form, RunLoop& runLoop)
    : m_form(form)
    , m_urlRow(*builder->get_widget<Gtk::Widget>("url-row"))
    , m_folderRow(*builder->get_widget<Gtk::Widget>("folder-row"))
    , m_folderTitle(*builder->get_widget<Gtk::Label>("folder-title"))
    , m_warning(*builder->get_widget<Gtk::Label>("local-warning"))
    , m_clear(*builder->get_widget<Gtk::Button>("clear"))
    , m_folderSymbol(OperatorForm::chooseSymbol, folderSymbolSize)
    , m_url(
          *builder->get_widget<Gtk::Box>("url-box"), [this] { return m_form.urlField(); }, runLoop)
{
    builder->get_widget<Gtk::Label>("source-heading")
        ->set_text(std::string(OperatorForm::sourceHeading));
    m_warning.set_text(std::string(OperatorForm::localWarning));
    builder->get_widget<Gtk::Box>("folder-box")->prepend(m_folderSymbol);

    auto& choose = *builder->get_widget<Gtk::Button>("choose");
    showSymbol(choose, OperatorForm::chooseSymbol, OperatorForm::chooseName);
    choose.signal_clicked().connect([this] { m_form.chooseSource(); });
    showSymbol(m_clear, OperatorForm::clearSymbol, OperatorForm::clearName);
    m_clear.signal_clicked().connect([this] { m_form.clearSource(); });
}

void OperatorSourceGtk::update()
{
    m_url.update();
    const bool isLocal = m_form.isLocal();
    m_folderTitle.set_text(isLocal ? m_form.localTitle() : "");
    m_warning.set_visible(m_form.localWarn());
    if (isLocal == m_folderRow.get_visible() && isLocal != m_urlRow.get_visible())
        return;
    auto& leaving = isLocal ? m_urlRow : m_folderRow;
    const bool hadFocus = gtk_widget_get_focus_child(leaving.gobj());
    m_folderRow.set_visible(isLocal);
    m_urlRow.set_visible(!isLocal);
    if (hadFocus)
        focus();
}

void OperatorSourceGtk::focus()
{
    if (m_form.isLocal())
        m_clear.grab_focus();
    else
        m_url.focus();
}

OperatorDomainsGtk::OperatorDomainsGtk(
    const Glib::RefPtr<Gtk::Builder>& builder, OperatorForm& form, RunLoop& runLoop)
    : m_form(form)
    , m_rows(*builder->get_widget<Gtk::Box>("domain-rows"))
    , m_caption(*builder->get_widget<Gtk::Box>("domains-caption"), OperatorForm::domainsCaption)
    , m_draft(
          *builder->get_widget<Gtk::Box>("domain-box"), [this] { return m_form.domainField(); },
          runLoop)
{
    auto& add = *builder->get_widget<Gtk::Button>("add");
    showSymbol(add, OperatorForm::addSymbol, OperatorForm::addName);
    add.signal_clicked().connect([this] { m_form.addDomain(); });
    m_rows.set_visible(false);
}

void OperatorDomainsGtk::update()
{
    m_draft.update();
    if (m_form.domains() != m_shown)
        makeRows();
}

void OperatorDomainsGtk::makeRows()
{
    while (auto* row = m_rows.get_first_child())
        m_rows.remove(*row);
    m_removers.clear();
    m_shown = m_form.domains();
    for (std::size_t index = 0; index < m_shown.size(); ++index) {
        auto& row = *Gtk::make_managed<Gtk::Box>();
        g_object_set(row.gobj(), "accessible-role", GTK_ACCESSIBLE_ROLE_LIST_ITEM, nullptr);
        auto& name = *Gtk::make_managed<Gtk::Label>(m_shown[index]);
        name.set_xalign(0);
        name.set_hexpand(true);
        name.set_ellipsize(Pango::EllipsizeMode::MIDDLE);
        name.set_max_width_chars(1); // The rows ask for no room, and take what there is.
        row.append(name);
        auto& remover = *Gtk::make_managed<Gtk::Button>();
        remover.add_css_class("square");
        showSymbol(remover, OperatorForm::removeSymbol, OperatorForm::removeName(m_shown[index]));
        remover.signal_clicked().connect([this, index] { remove(index); });
        row.append(remover);
        m_removers.push_back(&remover);
        m_rows.append(row);
    }
    m_rows.set_visible(!m_shown.empty());
}

void OperatorDomainsGtk::remove(std::size_t index)
{
    const bool hadFocus = m_removers[index]->has_focus();
    m_form.removeDomain(index); // Which makes the rows anew.
    if (!hadFocus)
        return;
    if (m_removers.empty())
        m_draft.focus();
    else
        m_removers[std::min(index, m_removers.size() - 1)]->grab_focus();
}

} // namespace quillox
