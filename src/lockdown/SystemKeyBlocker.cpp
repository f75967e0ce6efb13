#include "lockdown/SystemKeyBlocker.h"

#include "ports/SystemLog.h"

namespace quillox {

namespace {

    constexpr EventMask tappedEvents = maskOf(EventType::KeyDown) | maskOf(EventType::KeyUp)
        | maskOf(EventType::FlagsChanged) | maskOf(EventType::SystemDefined);

} // namespace

SystemKeyBlocker::SystemKeyBlocker(Machine machine)
    : m_machine(machine)
    , m_hold(machine.runLoop, [this](double progress) { tickHold(progress); })
{
}

bool SystemKeyBlocker::start()
{
    if (m_eventTap)
        return true;
    if (createTap())
        return true;
    m_machine.log.write("Quillox: could not create event tap — Accessibility permission missing.");
    m_availability.reset();
    m_availability = m_machine.eventTaps.onAvailable([this] {
        if (createTap())
            m_availability.reset();
    });
    return false;
}

bool SystemKeyBlocker::createTap()
{
    m_eventTap = m_machine.eventTaps.create(EventTaps::Options::Default, tappedEvents,
        [this](const Event& event) { return handle(event); });
    // Whoever seals with this very gesture still holds S.
    if (m_eventTap)
        m_isArmed = !m_machine.keyState.isKeyDown(KeyStateSource::CombinedSession, keys::s);
    return isRunning();
}

void SystemKeyBlocker::stop()
{
    m_availability.reset();
    m_eventTap.reset();
}

EventTaps::Verdict SystemKeyBlocker::handle(const Event& event)
{
    const bool isRelease = event.type == EventType::KeyUp && event.keyCode == keys::s;
    const bool isSDown
        = isRelease && m_machine.keyState.isKeyDown(KeyStateSource::HidSystem, keys::s);
    const auto decision = decideKey(event, isSDown);
    switch (decision.action) {
    case KeyDecision::Action::None:
        break;
    case KeyDecision::Action::ReenableTap:
        if (m_eventTap)
            m_eventTap->setEnabled(true);
        break;
    case KeyDecision::Action::BeginHold:
        beginHold();
        break;
    case KeyDecision::Action::CancelHold:
        cancelHold();
        break;
    case KeyDecision::Action::ArmAndCancelHold:
        m_isArmed = true;
        cancelHold();
        break;
    }
    return decision.verdict;
}

void SystemKeyBlocker::beginHold()
{
    if (!m_isArmed)
        return;
    m_isArmed = false;
    m_hold.begin();
}

void SystemKeyBlocker::tickHold(double progress)
{
    if (onHoldProgress)
        onHoldProgress(progress);
    if (progress < 1)
        return;
    cancelHold();
    // The end of the run, which this may be, must not end the callback under way.
    if (const auto exit = onExitCombo)
        exit();
}

void SystemKeyBlocker::cancelHold()
{
    m_hold.cancel();
    if (onHoldProgress)
        onHoldProgress(0);
}

bool SystemKeyBlocker::canCreateTap(EventTaps& eventTaps)
{
    return eventTaps.create(EventTaps::Options::ListenOnly, maskOf(EventType::KeyDown),
               [](const Event&) { return EventTaps::Verdict::Pass; })
        != nullptr;
}

} // namespace quillox
