#include "lockdown/LaunchArmer.h"

#include "lockdown/KeyDecision.h"

namespace quillox {

namespace {

    using enum EventMonitors::Verdict;

    constexpr EventMask watchedEvents
        = maskOf(EventType::KeyDown) | maskOf(EventType::KeyUp) | maskOf(EventType::FlagsChanged);

} // namespace

LaunchArmer::LaunchArmer(Machine machine)
    : m_machine(machine)
    , m_hold(machine.runLoop, [this](double held) { tick(held); })
{
}

void LaunchArmer::start()
{
    if (m_monitor)
        return;
    m_isArmed = isSUp();
    m_monitor = m_machine.eventMonitors.addLocalMonitor(
        watchedEvents, [this](const Event& event) { return handle(event); });
}

void LaunchArmer::stop()
{
    m_monitor.reset();
    cancelHold();
}

bool LaunchArmer::isSUp() const
{
    return !m_machine.keyState.isKeyDown(KeyStateSource::HidSystem, keys::s);
}

EventMonitors::Verdict LaunchArmer::handle(const Event& event)
{
    const bool both = containsAll(event.flags, sealModifiers);
    if (event.type == EventType::FlagsChanged && !both)
        cancelHold();
    if (event.keyCode != keys::s)
        return Pass;
    if (event.type == EventType::KeyUp) {
        m_isArmed = m_isArmed || isSUp();
        cancelHold();
    }
    if (event.type != EventType::KeyDown || !both)
        return Pass;
    // Whether or not a hold begins, no text field may get this S.
    beginHold();
    return Swallow;
}

void LaunchArmer::beginHold()
{
    if (!m_isArmed)
        return;
    m_isArmed = false;
    m_hold.begin();
}

void LaunchArmer::tick(double held)
{
    progress.set(held);
    if (held < 1)
        return;
    cancelHold();
    if (const auto complete = onComplete)
        complete();
}

void LaunchArmer::cancelHold()
{
    m_hold.cancel();
    if (progress.get() != 0)
        progress.set(0);
}

} // namespace quillox
