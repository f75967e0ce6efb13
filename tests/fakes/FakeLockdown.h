#pragma once

#include "fakes/Journal.h"
#include "lockdown/SealViews.h"
#include "ports/PowerAssertions.h"
#include "ports/SymbolicHotKeys.h"

#include <fmt/format.h>
#include <optional>

namespace quillox {

struct FakeView final : View { };

/// Notes in the journal each number that is switched.
class FakeSymbolicHotKeys final : public SymbolicHotKeys {
public:
    explicit FakeSymbolicHotKeys(Journal& journal)
        : m_journal(journal)
    {
    }

    bool isAvailable() const override { return true; }
    std::int32_t setEnabled(std::int32_t number, bool isEnabled) override
    {
        m_journal.add(fmt::format("hot key {} {}", number, isEnabled ? "on" : "off"));
        return 1;
    }

private:
    Journal& m_journal;
};

class FakePowerAssertions final : public PowerAssertions {
public:
    explicit FakePowerAssertions(Journal& journal)
        : m_journal(journal)
    {
    }

    std::int32_t result = 0;

    Creation create(std::string_view type, std::uint32_t level, std::string_view name) override
    {
        m_journal.add(fmt::format("assert {} {} '{}'", type, level, name));
        return { result, result == 0 ? ++m_last : 0 };
    }
    void release(Identifier identifier) override
    {
        m_journal.add(fmt::format("release assertion {}", identifier));
    }

private:
    Journal& m_journal;
    Identifier m_last = 0;
};

/// Views that show nothing and give the models to the test.
class FakeSealViews final : public SealViews {
public:
    explicit FakeSealViews(Journal& journal)
        : m_journal(journal)
    {
    }

    int prompts = 0;
    SealPrompt* prompt = nullptr; ///< The last one that was shown; dangles once that is gone.
    HoldIndicatorModel* hold = nullptr;

    std::unique_ptr<View> makePrompt(SealPrompt& shown) override
    {
        prompt = &shown;
        ++prompts;
        return std::make_unique<FakeView>();
    }
    std::unique_ptr<View> makeHoldIndicator(HoldIndicatorModel& model) override
    {
        hold = &model;
        m_journal.add(fmt::format("make hold indicator at {}", model.progress.get()));
        return std::make_unique<FakeView>();
    }

private:
    Journal& m_journal;
};

} // namespace quillox
