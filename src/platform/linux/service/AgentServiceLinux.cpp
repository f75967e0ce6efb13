#include "platform/linux/service/AgentServiceLinux.h"

#include "platform/linux/service/AgentDefinition.h"
#include "platform/linux/system/AtomicFile.h"
#include "ports/SystemLog.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

namespace quillox {

namespace {

    using Role = UserManager::Role;

    constexpr auto masked = "masked";
    constexpr auto noAnswer = "the user's service manager does not answer";

    std::optional<std::string> failureOf(const FileResult& result)
    {
        return result ? std::nullopt : std::optional(result.reason);
    }

    std::optional<std::string> replace(const std::string& path, const std::string& text)
    {
        if (const auto made = makeDirectories(std::filesystem::path(path).parent_path()); !made)
            return failureOf(made);
        return failureOf(replaceFile(path, text));
    }

    std::optional<std::string> remove(const std::string& path)
    {
        if (::unlink(path.c_str()) == 0 || errno == ENOENT || errno == ENOTDIR)
            return std::nullopt;
        return fmt::format("{}: {}", path, std::generic_category().message(errno));
    }

} // namespace

AgentServiceLinux::AgentServiceLinux(std::string name, AgentPlaces places, RunLoop& runLoop,
    SystemLog& log, std::chrono::milliseconds patience)
    : m_name(std::move(name))
    , m_places(std::move(places))
    , m_log(log)
    , m_manager(runLoop, m_places.runtimeFolder, patience)
{
}

void AgentServiceLinux::status(std::function<void(Status)> onStatus)
{
    enqueue([this, onStatus = std::move(onStatus)] {
        m_manager.findRole([this, onStatus](Role role) {
            switch (role) {
            case Role::RunsSession:
                return readUnitStatus(
                    [this, onStatus](Status status) { finish(onStatus, status); });
            case Role::Absent:
            case Role::Bystander:
                return finish(onStatus, entryStatus());
            case Role::Silent:
                return finish(onStatus, Status::NotFound);
            }
        });
    });
}

void AgentServiceLinux::registerAgent(Outcome outcome)
{
    enqueue([this, outcome = std::move(outcome)] {
        const auto end = [this, outcome](const Failure& failure) { finish(outcome, failure); };
        m_manager.findRole([this, end](Role role) {
            switch (role) {
            case Role::RunsSession:
                return registerUnit(end);
            case Role::Absent:
                return end(writeEntry());
            case Role::Bystander:
                // A unit from a session of another kind would start the application twice in it.
                return removeUnit(
                    [this, end](const Failure& failure) { end(failure ? failure : writeEntry()); });
            case Role::Silent:
                return end(noAnswer);
            }
        });
    });
}

void AgentServiceLinux::unregisterAgent(Outcome outcome)
{
    enqueue([this, outcome = std::move(outcome)] {
        const auto end = [this, outcome](const Failure& failure) { finish(outcome, failure); };
        m_manager.findRole([this, end](Role role) {
            const auto failure = removeEntry();
            switch (role) {
            case Role::RunsSession:
            case Role::Bystander:
                return removeUnit(
                    [end, failure](const Failure& other) { end(failure ? failure : other); });
            case Role::Absent:
                return end(failure);
            case Role::Silent:
                return end(noAnswer);
            }
        });
    });
}

void AgentServiceLinux::enqueue(Task task)
{
    m_tasks.push_back(std::move(task));
    if (m_tasks.size() == 1)
        m_tasks.front()();
}

template <typename Answer>
void AgentServiceLinux::finish(const std::function<void(Answer)>& onAnswer, Answer answer)
{
    // The task goes, and with it what it holds; the callback may take this along.
    const auto callback = onAnswer;
    m_tasks.pop_front();
    if (!m_tasks.empty())
        m_tasks.front()();
    callback(std::move(answer));
}

void AgentServiceLinux::readUnitStatus(std::function<void(Status)> onStatus)
{
    m_manager.readUnitFileState(
        unit(), [this, onStatus = std::move(onStatus)](const std::optional<std::string>& state) {
            if (!state)
                return onStatus(Status::NotFound);
            if (*state == "enabled")
                return onStatus(Status::Enabled);
            if (state->starts_with(masked))
                return onStatus(Status::RequiresApproval);
            const bool isThere
                = !state->empty() || findUnitDefinition(m_places, unit()).reason.empty();
            onStatus(isThere ? Status::NotRegistered : Status::NotFound);
        });
}

AgentService::Status AgentServiceLinux::entryStatus() const
{
    const auto text = readFile(entry()).text;
    return text && isSwitchedOn(*text) ? Status::Enabled : Status::NotRegistered;
}

void AgentServiceLinux::registerUnit(Outcome outcome)
{
    m_manager.readUnitFileState(unit(), [this, outcome](const std::optional<std::string>& state) {
        if (!state)
            return outcome(noAnswer);
        // Enabling would do away with what somebody has forbidden.
        if (state->starts_with(masked))
            return outcome(unit() + " is masked");
        std::string file;
        if (const auto failure = writeUnit(file))
            return outcome(failure);
        // Where the folder of units is new as well, the manager does not look into it yet.
        m_manager.reload([this, outcome, file](const Failure& failure) {
            if (failure)
                return outcome(failure);
            enableUnit(file, outcome);
        });
    });
}

void AgentServiceLinux::enableUnit(const std::string& file, Outcome outcome)
{
    m_manager.enable(file, [this, outcome = std::move(outcome)](const Failure& failure) {
        if (const auto left = failure ? std::nullopt : removeEntry())
            m_log.write("Quillox: an autostart entry that is not needed stays: " + *left);
        outcome(failure);
    });
}

void AgentServiceLinux::removeUnit(Outcome outcome)
{
    m_manager.readUnitFileState(unit(), [this, outcome](const std::optional<std::string>& state) {
        if (!state)
            return outcome(noAnswer);
        if (state->empty())
            return outcome(removeWrittenUnit());
        m_manager.disable(unit(), [this, outcome](const Failure& failure) {
            const auto left = failure ? failure : removeWrittenUnit();
            if (left)
                return outcome(left);
            m_manager.reload(outcome);
        });
    });
}

AgentServiceLinux::Failure AgentServiceLinux::writeUnit(std::string& file) const
{
    const auto present = readFile(writtenUnit());
    // What somebody wrote there on purpose goes before ours.
    if (present.text && !isWrittenHere(*present.text)) {
        file = unit();
        return std::nullopt;
    }
    const auto definition = findUnitDefinition(m_places, unit());
    if (!definition.reason.empty())
        return definition.reason;
    if (!definition.installedFile.empty()) {
        file = definition.installedFile;
        return removeWrittenUnit();
    }
    file = unit();
    return replace(writtenUnit(), definition.text);
}

AgentServiceLinux::Failure AgentServiceLinux::removeWrittenUnit() const
{
    const auto present = readFile(writtenUnit());
    return present.text && isWrittenHere(*present.text) ? remove(writtenUnit()) : std::nullopt;
}

AgentServiceLinux::Failure AgentServiceLinux::writeEntry() const
{
    const auto text = autostartEntry(m_places.program());
    return text ? replace(entry(), *text) : "no autostart entry can start " + m_places.program();
}

AgentServiceLinux::Failure AgentServiceLinux::removeEntry() const
{
    return remove(entry());
}

std::string AgentServiceLinux::writtenUnit() const
{
    return fmt::format("{}/systemd/user/{}", m_places.configFolder, unit());
}

std::string AgentServiceLinux::entry() const
{
    return fmt::format("{}/autostart/{}.desktop", m_places.configFolder, m_name);
}

} // namespace quillox
