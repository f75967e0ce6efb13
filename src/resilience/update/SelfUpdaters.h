#pragma once

#include "resilience/update/SelfUpdater.h"

#include <memory>

namespace quillox {

/// Makes the updater of an installation that nobody else maintains.
class SelfUpdaters final : public Updaters {
public:
    SelfUpdaters(UpdateMachine machine, SelfUpdater::Surroundings surroundings)
        : m_machine(std::move(machine))
        , m_surroundings(surroundings)
    {
    }

    std::unique_ptr<Updater> makeUpdater(Updater::Delegate& delegate) override
    {
        return std::make_unique<SelfUpdater>(m_machine, m_surroundings, delegate);
    }

private:
    UpdateMachine m_machine;
    SelfUpdater::Surroundings m_surroundings;
};

} // namespace quillox
