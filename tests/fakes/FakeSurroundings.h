#pragma once

#include "fakes/FakeLockdown.h"
#include "fakes/Journal.h"
#include "kiosk/KioskViews.h"
#include "ports/PathMonitors.h"

#include <fmt/format.h>
#include <memory>

namespace quillox {

/// A network that the test pulls and plugs. It calls its monitor at once; a real one does so on a
/// thread of its own, which the core must expect.
class FakePathMonitors final : public PathMonitors {
public:
    explicit FakePathMonitors(Journal& journal)
        : m_journal(journal)
    {
    }

    Handle startMonitor(const std::string& label, Handler handler) override
    {
        m_journal.add("watch network on " + label);
        *m_handler = std::move(handler);
        return Handle([this] {
            *m_handler = nullptr;
            m_journal.add("network watch ends");
        });
    }

    bool isWatched() const { return static_cast<bool>(*m_handler); }
    void tell(PathStatus status) const { (*m_handler)(status); }

private:
    Journal& m_journal;
    std::shared_ptr<Handler> m_handler = std::make_shared<Handler>();
};

/// Views that show nothing and give the models to the test.
class FakeKioskViews final : public KioskViews {
public:
    explicit FakeKioskViews(Journal& journal)
        : m_journal(journal)
    {
    }

    OfflineModel* notice = nullptr;
    KioskNavBar* navBar = nullptr; ///< Dangles once the run is over, as the color does.
    Published<Color>* notchColor = nullptr;

    std::unique_ptr<View> makeOfflineNotice(OfflineModel& model) override
    {
        notice = &model;
        return made("offline notice");
    }
    std::unique_ptr<View> makeNavBar(KioskNavBar& model) override
    {
        navBar = &model;
        return made("nav bar");
    }
    std::unique_ptr<View> makeNotchBar(Published<Color>& color) override
    {
        notchColor = &color;
        return made("notch bar");
    }

private:
    std::unique_ptr<View> made(const char* what)
    {
        m_journal.add(fmt::format("make {}", what));
        return std::make_unique<FakeView>();
    }

    Journal& m_journal;
};

} // namespace quillox
