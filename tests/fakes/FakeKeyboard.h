#pragma once

#include "fakes/Journal.h"
#include "ports/EventTap.h"
#include "ports/KeyState.h"

#include <set>

namespace quillox {

/// The session's keyboard: keys that go down and up, and at most one tap that sees them first.
class FakeKeyboard final : public EventTaps, public KeyState {
public:
    explicit FakeKeyboard(Journal& journal)
        : m_journal(journal)
    {
    }

    bool allowsTaps = true;
    int created = 0;
    Options lastOptions = Options::Default;
    int reenabled = 0;
    std::set<KeyCode> down; ///< As the keyboards report.
    std::set<KeyCode> downInSession; ///< Besides, as the session sees it.

    bool isTapped() const { return m_handler != nullptr; }

    /// Gives the event to the tap, if it wants such; whether the application would get it.
    Verdict send(const Event& event)
    {
        const bool isAboutTap = event.type == EventType::TapDisabledByTimeout
            || event.type == EventType::TapDisabledByUserInput;
        const auto handler = m_handler;
        const bool isWanted = handler && (isAboutTap || (m_mask & maskOf(event.type)) != 0);
        return isWanted ? handler(event) : Verdict::Pass;
    }

    Verdict press(KeyCode key, ModifierFlags flags = ModifierFlags::None)
    {
        down.insert(key);
        return send({ .type = EventType::KeyDown, .keyCode = key, .flags = flags });
    }
    Verdict release(KeyCode key, ModifierFlags flags = ModifierFlags::None)
    {
        down.erase(key);
        return send({ .type = EventType::KeyUp, .keyCode = key, .flags = flags });
    }

    /// From now on taps can be created; whoever waits for it is told.
    void allowTaps()
    {
        allowsTaps = true;
        if (const auto available = m_onAvailable)
            available();
    }

    std::unique_ptr<EventTap> create(Options options, EventMask mask, Handler handler) override
    {
        if (!allowsTaps || m_handler)
            return nullptr;
        ++created;
        lastOptions = options;
        m_mask = mask;
        return std::make_unique<Tap>(*this, std::move(handler));
    }
    Handle onAvailable(std::function<void()> callback) override
    {
        m_onAvailable = std::move(callback);
        return Handle([this] { m_onAvailable = nullptr; });
    }
    bool isKeyDown(KeyStateSource source, KeyCode key) const override
    {
        return down.contains(key)
            || (source == KeyStateSource::CombinedSession && downInSession.contains(key));
    }

private:
    struct Tap final : EventTap {
        Tap(FakeKeyboard& keyboard, Handler handler)
            : owner(keyboard)
        {
            owner.m_handler = std::move(handler);
            owner.m_journal.add("key lock on");
        }
        ~Tap() override
        {
            owner.m_handler = nullptr;
            owner.m_journal.add("key lock off");
        }
        void setEnabled(bool isEnabled) override { owner.reenabled += isEnabled; }

        FakeKeyboard& owner;
    };

    Journal& m_journal;
    Handler m_handler;
    EventMask m_mask = 0;
    std::function<void()> m_onAvailable;
};

} // namespace quillox
