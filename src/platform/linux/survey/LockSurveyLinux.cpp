#include "platform/linux/survey/LockSurveyLinux.h"

#include "platform/linux/survey/Alarm.h"
#include "platform/linux/system/RunningApplicationsSocket.h"

#include <cstdlib>
#include <gdk/wayland/gdkwayland.h>
#include <gdk/x11/gdkx.h>
#include <gtk/gtk.h>
#include <utility>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    /// For opening the display, and again for all questions to it: of one that is there even a slow
    /// machine's answers within a fraction.
    constexpr auto displayPatience = 5s;

    std::string environment(const char* name)
    {
        const auto* value = std::getenv(name);
        return value ? value : "";
    }

} // namespace

LockSurveyLinux::LockSurveyLinux(
    std::string identifier, std::function<void(const LockFacts&)> onNoAnswer)
    : m_identifier(std::move(identifier))
    , m_onNoAnswer(std::move(onNoAnswer))
{
}

LockFacts LockSurveyLinux::machineFacts() const
{
    LockFacts facts;
    facts.sessionType = environment("XDG_SESSION_TYPE");
    facts.sessionDesktop = environment("XDG_SESSION_DESKTOP");
    facts.sessionClass = environment("XDG_SESSION_CLASS");
    facts.kioskProcess = RunningApplicationsSocket::firstCopy(m_identifier);
    surveySystem(facts);
    return facts;
}

LockFacts LockSurveyLinux::survey()
{
    auto facts = machineFacts();
    auto unanswered = facts;
    unanswered.display = LockFacts::Display::NotAnswering;
    const auto giveUp = [this, &unanswered] { m_onNoAnswer(unanswered); };
    if (const Alarm alarm(displayPatience, giveUp); !gtk_init_check())
        return facts;
    const Alarm alarm(displayPatience, giveUp);
    auto* display = gdk_display_get_default();
    facts.displayName = gdk_display_get_name(display);
    if (GDK_IS_X11_DISPLAY(display)) {
        facts.display = LockFacts::Display::X11;
        surveyX11(display, facts);
    } else if (GDK_IS_WAYLAND_DISPLAY(display)) {
        facts.display = LockFacts::Display::Wayland;
        surveyWayland(display, facts);
    }
    return facts;
}

} // namespace quillox
